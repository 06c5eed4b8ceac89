// SystemInit.Upload with UpToFile = 2 (nothing written) on two bodies, each beside memchr over the
// same bytes in the same run:
//   - LargeFile: one 64 MiB file (random bytes without 0x7F, so that memchr for 0x7F reads it all);
//   - SmallFields: 255 fields of a few dozen bytes, some of them Chinese (GBK).
// The "AndRead" cases also read every item back with Form, which makes the file's byte array.
// Each iteration needs a fresh page (the body can be read once); building it is not timed. memchr
// runs both over one body that stays in place and over each fresh page's body, which is the state
// Upload finds it in.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>

#include "corvane/corvane.h"
#include "upload/system_init.h"

namespace corvane {
namespace {

const std::string kBoundary = "----WebKitFormBoundary7MA4YWxkTrZu0gW";

std::string LargeFileBody() {
  std::string content(64u << 20, '\0');
  std::mt19937_64 rng(42);
  for (size_t i = 0; i < content.size(); i += 8) {
    uint64_t r = rng();
    std::memcpy(&content[i], &r, 8);
  }
  for (char& c : content)
    if (c == '\x7f') c = 'x';
  return "--" + kBoundary +
         "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"C:\\data\\big.bin\"\r\n" +
         "Content-Type: application/octet-stream\r\n\r\n" + content + "\r\n--" + kBoundary + "--\r\n";
}

std::string SmallFieldsBody() {
  const std::string gbk = EncodeCodePage("张三的报告", kCodePageGbk);
  std::string body;
  for (int i = 0; i < 255; ++i) {
    body += "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"field" + std::to_string(i) +
            "\"\r\n\r\n";
    body +=
        (i % 4 == 0) ? gbk + " " + std::to_string(i) : "value number " + std::to_string(i) + " of the form";
    body += "\r\n";
  }
  return body + "--" + kBoundary + "--\r\n";
}

const std::string& Body(int which) {
  static const std::string large = LargeFileBody();
  static const std::string small = SmallFieldsBody();
  return which == 0 ? large : small;
}

// What is timed, on a fresh page per iteration.
enum class Work { kUpload, kUploadAndRead, kMemchr };

void Run(benchmark::State& state, Work work, int which) {
  const std::string& body = Body(which);
  for (auto _ : state) {
    state.PauseTiming();
    host::Session session;
    auto page = std::make_unique<host::Page>(
        host::PageRequest{
            .url = "/upload.asp", .contentType = "multipart/form-data; boundary=" + kBoundary, .body = body},
        session, host::PageHost{.createObject = CreateObject});
    auto up = page->Server().CreateObject("corvane.SystemInit").As<SystemInit>();
    up->UpToFile(2);
    up->MaxSize(1 << 30);
    std::string result = "OK";
    state.ResumeTiming();

    if (work == Work::kMemchr) {
      // The same bytes in the same state: the page's own copy of the body, just made.
      const std::string& fresh = page->Request().Body();
      benchmark::DoNotOptimize(std::memchr(fresh.data(), 0x7f, fresh.size()));
    } else {
      result = up->Upload();
      if (work == Work::kUploadAndRead) {
        for (int i = 0, n = up->count().ToLong(); i < n; ++i) {
          Variant name(which == 0 ? std::string("file") : "field" + std::to_string(i));
          benchmark::DoNotOptimize(up->Form(name));
        }
      }
    }

    state.PauseTiming();
    if (result != "OK") state.SkipWithError(result.c_str());
    up.reset();
    page.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(body.size()));
}

void BM_Upload(benchmark::State& state, int which) { Run(state, Work::kUpload, which); }
void BM_UploadAndRead(benchmark::State& state, int which) { Run(state, Work::kUploadAndRead, which); }
void BM_MemchrFreshPage(benchmark::State& state, int which) { Run(state, Work::kMemchr, which); }

// memchr over one body that stays in place (warm in the caches after the first pass).
void BM_Memchr(benchmark::State& state, int which) {
  const std::string& body = Body(which);
  for (auto _ : state) benchmark::DoNotOptimize(std::memchr(body.data(), 0x7f, body.size()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(body.size()));
}

// 0 = LargeFile, 1 = SmallFields.
BENCHMARK_CAPTURE(BM_Memchr, LargeFile, 0);
BENCHMARK_CAPTURE(BM_MemchrFreshPage, LargeFile, 0)->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Upload, LargeFile, 0)->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UploadAndRead, LargeFile, 0)->Iterations(10)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Memchr, SmallFields, 1);
BENCHMARK_CAPTURE(BM_MemchrFreshPage, SmallFields, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Upload, SmallFields, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_UploadAndRead, SmallFields, 1)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace corvane

BENCHMARK_MAIN();
