<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/permission.inc"--><%
' The access groups of the person's system: the list, and ac=add (name), del (id), edit (id: the
' rename form) and rename (id, name). A bad id or name is refused before anything changes.
Dim permission, ac, id, name, message, editForm, conn
GuardGroupPage
ac = Param("ac")
id = Param("id")
name = Param("name")
If (ac = "add" Or ac = "rename") And name = "" Then RefuseInput "name", BadGroupName
Set permission = OpenPermission()
message = ""
editForm = ""
If ac = "add" Then
  permission.AddGroup name
  message = "已添加权限组：" & name
ElseIf ac = "del" And IsGroupID(id) Then
  permission.delGroup CLng(id)
  message = "已删除。"
ElseIf ac = "rename" And GroupName(id) <> "" Then
  Set conn = Server.CreateObject("ADODB.Connection")
  conn.Open ConnStr()
  conn.Execute "update AccessGroup set accessGroupName='" & name & "' where accessGroupID=" & id
  conn.Close
  message = "已改名为：" & name
ElseIf ac = "edit" Then
  name = GroupName(id)
  If name <> "" Then
    editForm = "<form method=post action='permission.asp'><input type=hidden name=ac value=rename>" & _
      "<input type=hidden name=id value='" & id & "'>新组名 <input type=text name=name value='" & Html(name) & _
      "'> <input type=submit value='改名'></form>" & vbCrLf
  End If
End If

WriteHead "权限管理", StyleLink & vbCrLf, ""
%><h2 class=title>权限组</h2>
<% If message <> "" Then %><p class=message><%= Html(message) %></p>
<% End If %><%= editForm %><table class=tbl cellSpacing=0 id=groups><tr><th>序号</th><th>权限组</th><th>操作</th></tr>
<%= permission.DispGroup() %></table>
<form method=post action='permission.asp' class=add><input type=hidden name=ac value=add>新权限组 <input type=text name=name> <input type=submit value='添加'></form>
<% WriteFoot %>