<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/permission.inc"--><%
' A group's members: a check box per person of the system; the form sends the checked ids.
Dim id, name, permission, message, ids
RequireSignIn
id = Param("id")
name = GroupName(id)
If name = "" Then
  Response.Redirect "permission.asp"
End If
Set permission = OpenPermission()
message = ""
If Request.ServerVariables("REQUEST_METHOD") = "POST" Then
  ' The check boxes arrive joined by ", "; the component wants the ids joined by "," alone, and puts
  ' them into SQL as they are: digits and commas only.
  ids = Replace(Request.Form("checkbox") & "", " ", "")
  If IsIdList(ids) Then message = permission.SavePerson(CLng(id), ids) & ""
End If

' True when `text` is empty or ids joined by ",".
Function IsIdList(text)
  Dim part
  IsIdList = True
  If text = "" Then Exit Function
  For Each part In Split(text, ",")
    If Not IsDigits(part, 9) Then IsIdList = False
  Next
End Function

WriteHead "设置人员", StyleLink & vbCrLf, ""
%><h2 class=title>设置人员：<%= Html(name) %></h2>
<% If message <> "" Then %><p class=message><%= Html(message) %></p>
<% End If %><form method=post action='permissionMan.asp?id=<%= id %>'><div class=members><%= permission.DispPerson(CLng(id)) %></div>
<p><input type=submit value='保存人员'> <a href='permission.asp'>返回权限组</a></p></form>
<% WriteFoot %>