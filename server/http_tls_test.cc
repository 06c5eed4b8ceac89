// HTTPS: with a certificate and key the server speaks TLS only, and the session cookie is Secure.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdio>

#include "http_test_support.h"

namespace corvane::server {
namespace {

using namespace ::testing;

// A self-signed certificate for 127.0.0.1 and its key, written as PEM files.
void WriteSelfSigned(const std::filesystem::path& cert, const std::filesystem::path& key) {
  EVP_PKEY* pkey = EVP_RSA_gen(2048);
  X509* x = X509_new();
  ASN1_INTEGER_set(X509_get_serialNumber(x), 1);
  X509_gmtime_adj(X509_getm_notBefore(x), 0);
  X509_gmtime_adj(X509_getm_notAfter(x), 3600);
  X509_set_pubkey(x, pkey);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(x), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("127.0.0.1"), -1, -1, 0);
  X509_set_issuer_name(x, X509_get_subject_name(x));
  X509_sign(x, pkey, EVP_sha256());
  FILE* f = std::fopen(cert.c_str(), "w");
  PEM_write_X509(f, x);
  std::fclose(f);
  f = std::fopen(key.c_str(), "w");
  PEM_write_PrivateKey(f, pkey, nullptr, nullptr, 0, nullptr, nullptr);
  std::fclose(f);
  X509_free(x);
  EVP_PKEY_free(pkey);
}

TEST(HttpTlsTest, PagesAndFilesComeOverTlsWithASecureCookie) {
  auto dir = corvane::testing::ScratchPath("tls");
  std::filesystem::create_directories(dir);
  WriteSelfSigned(dir / "cert.pem", dir / "key.pem");
  PageRegistry pages;
  pages.Add("/keep.asp", [](PageContext& p) {
    p.Session.Set("seen", Variant(1));
    p.Response.Write(p.Request.ServerVariables("HTTPS"));
  });
  testing::TestServer s(
      {.threads = 2, .accessLog = false, .tlsCert = dir / "cert.pem", .tlsKey = dir / "key.pem"},
      std::move(pages));
  httplib::SSLClient c("127.0.0.1", s.port);
  c.enable_server_certificate_verification(false);
  auto page = c.Get("/keep.asp");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->body, "on");
  EXPECT_THAT(page->get_header_value("Set-Cookie"), EndsWith("; HttpOnly; SameSite=Strict; Secure"));
  EXPECT_EQ(c.Get("/missing.gif")->status, 404);
  // Plain HTTP on the TLS port gets no reply.
  testing::RawClient plain(s.port);
  plain.Send("GET /keep.asp HTTP/1.1\r\n\r\n");
  EXPECT_THAT(plain.Read(std::chrono::milliseconds(1000)), Not(HasSubstr("HTTP/1.1 200")));
}

}  // namespace
}  // namespace corvane::server
