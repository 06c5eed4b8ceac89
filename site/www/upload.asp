<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/guard.inc"--><%
' The upload page: a multipart form whose file SystemInit stores in the person's own folder under the
' drive path d:\up\ (d:\up\<personID>\), with a list of what the person has uploaded. Nobody
' reaches another's folder, so nobody replaces another's file of the same name.
Const MaxFileBytes = 16777216
Const UploadRoot = "d:\up\"

' The person's folder.
Function UploadFolder()
  UploadFolder = UploadRoot & PersonID() & "\"
End Function

' The file's name without any client folder.
Function BareName(name)
  Dim i, c
  BareName = name
  For i = Len(name) To 1 Step -1
    c = Mid(name, i, 1)
    If c = "\" Or c = "/" Or c = ":" Then
      BareName = Mid(name, i + 1)
      Exit Function
    End If
  Next
End Function

' The component writes into the person's folder but does not make it: a fresh drive has none yet.
Sub MakeUploadFolder()
  Dim fso
  Set fso = Server.CreateObject("Scripting.FileSystemObject")
  If Not fso.FolderExists("d:\") Then fso.CreateFolder "d:\"
  If Not fso.FolderExists("d:\up") Then fso.CreateFolder "d:\up"
  If Not fso.FolderExists(UploadFolder()) Then fso.CreateFolder UploadFolder()
End Sub

' A sent file name holding "/" ("../3/a.txt") would reach another folder: the site's guard refuses
' such an upload before this page runs (site/pages/upload_names.h).
Dim message, up, result, fileName, size, conn, rs, n
message = ""
If Request.ServerVariables("REQUEST_METHOD") = "POST" Then
  MakeUploadFolder
  Set up = Server.CreateObject("corvane.SystemInit")
  result = up.Upload(MaxFileBytes, UploadFolder(), 2) & ""
  If result = "OK" Then
    ' The component stores the file under the name the browser sent, but reports it through FileName
    ' only when the browser sent a folder with it ("c:\x\a.txt"). Current browsers send the bare name;
    ' the form's script copies it into the field file1Name.
    fileName = up.FileName("file1") & ""
    If fileName = "" Then fileName = BareName(up.Form("file1Name") & "")
    size = CLng(up.Size("file1"))
    Set conn = Server.CreateObject("ADODB.Connection")
    conn.Open ConnStr()
    conn.Execute "insert into upload(fileName,fileSize,personID,uploadTime,remark) values(" & _
      SqlText(fileName) & "," & size & "," & PersonID() & "," & SqlText(CStr(Now)) & "," & _
      SqlText(up.Form("remark")) & ")"
    conn.Close
    message = "上传成功：" & fileName & "（" & size & " 字节）"
  Else
    message = result
  End If
End If

WriteHead "文件上传", StyleLink & vbCrLf, ""
%><h2 class=title>文件上传</h2>
<% If message <> "" Then %><p class=message id=uploadMessage><%= Html(message) %></p>
<% End If %><form method=post action='/upload.asp' enctype='multipart/form-data' onsubmit='this.file1Name.value = this.file1.files.length ? this.file1.files[0].name : ""'>
<p>文件 <input type=file name=file1></p>
<p>说明 <input type=text name=remark size=40></p>
<p><input type=hidden name=file1Name><input type=submit value='上传'></p></form>
<table class=tbl cellSpacing=0 id=uploads><tr><th>文件名</th><th>大小</th><th>上传人</th><th>时间</th><th>说明</th></tr>
<%
Set rs = Server.CreateObject("ADODB.Recordset")
rs.Open "select fileName,fileSize,personName,uploadTime,remark from upload,person " & _
  "where upload.personID=person.personID and upload.personID=" & PersonID() & " order by uploadID desc", _
  ConnStr(), 1
n = 0
Do While Not rs.EOF And n < 50
  Response.Write "<tr><td>" & Html(rs("fileName")) & "</td><td>" & rs("fileSize") & "</td><td>" & _
    Html(rs("personName")) & "</td><td>" & rs("uploadTime") & "</td><td>" & Html(rs("remark")) & _
    "&nbsp;</td></tr>" & vbCrLf
  rs.MoveNext
  n = n + 1
Loop
rs.Close
%></table>
<% WriteFoot %>