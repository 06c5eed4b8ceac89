<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/permission.inc"--><%
' A group's menu rights: all menus of the system on the left, the group's on the right; the form
' sends the right-hand menu ids joined by "*".
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
  message = permission.SavePermission(CLng(id), Param("permitSetStr")) & ""
End If

WriteHead "设置权限", StyleLink & vbCrLf & "<script src=""/include/permission.js""></script>" & vbCrLf, ""
%><h2 class=title>设置权限：<%= Html(name) %></h2>
<% If message <> "" Then %><p class=message><%= Html(message) %></p>
<% End If %><form method=post action='permissionset.asp?id=<%= id %>' onsubmit='return collectRights(this)'>
<input type=hidden name=permitSetStr>
<table class=rights><tr><th>全部菜单</th><th></th><th>本组权限</th></tr>
<tr><td><select id=allMenus multiple size=20><%= permission.DispMenuItem() %></select></td>
<td class=moves><input type=button id=addRight value='添加 &gt;&gt;' onclick='addRights()'><br><br><input type=button id=removeRight value='&lt;&lt; 移除' onclick='removeRights()'></td>
<td><select id=groupMenus multiple size=20><%= permission.DispAccessMenuItem(CInt(id)) %></select></td></tr></table>
<p><input type=submit id=saveRights value='保存权限'> <a href='permission.asp'>返回权限组</a></p></form>
<% WriteFoot %>