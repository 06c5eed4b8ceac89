<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/permission.inc"--><%
' A group's members: a check box per person of the system; the form sends the checked ids.
Dim id, name, permission, message
GuardGroupPage
id = Param("id")
name = GroupName(id)
If name = "" Then
  Response.Redirect "permission.asp"
End If
Set permission = OpenPermission()
message = ""
If Request.ServerVariables("REQUEST_METHOD") = "POST" Then
  ' The check boxes arrive joined by ", "; the component wants the ids joined by "," alone.
  message = permission.SavePerson(CLng(id), Replace(Request.Form("checkbox") & "", " ", "")) & ""
End If

WriteHead "设置人员", StyleLink & vbCrLf, ""
%><h2 class=title>设置人员：<%= Html(name) %></h2>
<% If message <> "" Then %><p class=message><%= Html(message) %></p>
<% End If %><form method=post action='permissionMan.asp?id=<%= id %>'><div class=members><%= permission.DispPerson(CLng(id)) %></div>
<p><input type=submit value='保存人员'> <a href='permission.asp'>返回权限组</a></p></form>
<% WriteFoot %>