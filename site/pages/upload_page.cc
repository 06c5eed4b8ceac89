// The upload page: a multipart form whose file SystemInit stores under the drive path d:\up\, with a
// list of what has been uploaded.
#include <filesystem>
#include <memory>

#include "corvane/ado.h"
#include "corvane/codepage.h"
#include "corvane/dates.h"
#include "corvane/drive_path.h"
#include "pages.h"

namespace corvane::site {

namespace {

constexpr int32_t kMaxFileBytes = 16 * 1024 * 1024;
constexpr const char* kFolder = "d:\\up\\";

std::string Quoted(const std::string& text) {
  std::string out = "'";
  for (char c : text) out += c == '\'' ? std::string("''") : std::string(1, c);
  return out + "'";
}

// The file name the browser sent for `field`, decoded from the code page, without any client folder.
// The component stores a file under this name but reports it through FileName only when the client
// sent a folder with it ("c:\\x\\a.txt"); current browsers send the bare name, so the page reads it.
std::string ClientFileName(const std::string& body, const std::string& field, int codePage) {
  const std::string key = "name=\"" + field + "\"; filename=\"";
  size_t at = body.find(key);
  if (at == std::string::npos) return "";
  at += key.size();
  size_t end = body.find('"', at);
  if (end == std::string::npos) return "";
  // Decode first: a GBK trail byte may be 0x5C, the backslash.
  std::string name = DecodeCodePage(body.substr(at, end - at), codePage);
  size_t cut = name.find_last_of("\\/:");
  return cut == std::string::npos ? name : name.substr(cut + 1);
}

void Upload(PageContext& p) {
  if (!RequireSignIn(p)) return;
  std::string message;
  if (p.Request.ServerVariables("REQUEST_METHOD").Text() == "POST") {
    // The drive folder may be new (a fresh drive root): the component writes into it, it does not make it.
    std::error_code ec;
    std::filesystem::create_directories(MapDrivePath(kFolder), ec);
    Object up = p.Server.CreateObject("corvane.SystemInit");
    std::string result =
        Call(up, "Upload", {Variant(kMaxFileBytes), Variant(kFolder), Variant(int16_t{2})}).Text();
    if (result == "OK") {
      Args field{Variant("file1")};
      std::string fileName = up.Invoke("FileName", field).Text();
      if (fileName.empty()) fileName = ClientFileName(p.Request.Body(), "file1", p.Request.CodePage());
      int32_t size = up.Invoke("Size", field).ToLong();
      Args remarkField{Variant("remark")};
      std::string remark = up.Invoke("Form", remarkField).Text();
      ado::Connection conn;
      conn.Open(ConnStr(p));
      conn.Execute("insert into upload(fileName,fileSize,personID,uploadTime,remark) values(" +
                   Quoted(fileName) + "," + std::to_string(size) + "," + std::to_string(PersonID(p)) + "," +
                   Quoted(DateText(Now())) + "," + Quoted(remark) + ")");
      conn.Close();
      message = "上传成功：" + fileName + "（" + std::to_string(size) + " 字节）";
    } else {
      message = result;
    }
  }

  WriteHead(p, "文件上传", "<link rel=\"stylesheet\" href=\"/include/style.css\" type=\"text/css\">\r\n");
  p.Response.Write("<h2 class=title>文件上传</h2>\r\n");
  if (!message.empty()) p.Response.Write("<p class=message id=uploadMessage>" + Html(message) + "</p>\r\n");
  p.Response.Write(
      "<form method=post action='/upload.asp' enctype='multipart/form-data'>\r\n"
      "<p>文件 <input type=file name=file1></p>\r\n<p>说明 <input type=text name=remark size=40></p>\r\n"
      "<p><input type=submit value='上传'></p></form>\r\n"
      "<table class=tbl cellSpacing=0 "
      "id=uploads><tr><th>文件名</th><th>大小</th><th>上传人</th><th>时间</th><th>说明</th></tr>\r\n");
  ado::Recordset rs;
  rs.Open(
      "select fileName,fileSize,personName,uploadTime,remark from upload,person "
      "where upload.personID=person.personID order by uploadID desc",
      Variant(ConnStr(p)), 1);
  std::string rows;
  for (int n = 0; !rs.Eof() && n < 50; rs.MoveNext(), ++n)
    rows += "<tr><td>" + Html(rs.Field("fileName").Text()) + "</td><td>" + rs.Field("fileSize").Text() +
            "</td><td>" + Html(rs.Field("personName").Text()) + "</td><td>" + rs.Field("uploadTime").Text() +
            "</td><td>" + Html(rs.Field("remark").Text()) + "&nbsp;</td></tr>\r\n";
  rs.Close();
  p.Response.Write(rows + "</table>\r\n");
  WriteFoot(p);
}

}  // namespace

void RegisterUploadPage(server::PageRegistry& pages) { pages.Add("/upload.asp", Upload); }

}  // namespace corvane::site
