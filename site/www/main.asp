<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><%
' The start page: the menu tree of the person's rights, the staff bar of calendars, and the person's
' week in the main frame.

' One level of the menu tree: the recordset's entries, each with its children below it.
Function MenuLevel(permission, rs, level)
  Dim s, url, name, children
  s = "<ul class=menu" & level & ">" & vbCrLf
  Do While Not rs.EOF
    url = rs("menuURL") & ""
    name = Html(rs("menuName"))
    If url = "" Then
      s = s & "<li><span>" & name & "</span>"
    Else
      s = s & "<li><a href='" & url & "' target=main>" & name & "</a>"
    End If
    If level < 3 Then
      Set children = permission.GetMenu23(rs("menuID").Value)
      If Not children.EOF Then s = s & MenuLevel(permission, children, level + 1)
      children.Close
    End If
    s = s & "</li>" & vbCrLf
    rs.MoveNext
  Loop
  MenuLevel = s & "</ul>" & vbCrLf
End Function

Dim permission, rs, scheduler
WriteHead "corvane 办公系统", "<script src='/include/outlookbar.js'></script>" & vbCrLf, "class=frame"
%><div class=top><b>corvane 办公系统</b><span><%= Html(Session("personName")) %>，您好　<%= Date %>　<a href='/password.asp' target=main>修改密码</a>　<a href='/logout.asp'>退出</a></span></div>
<div class=side><div class=tree><%
' The menus the person may see: everything for the system account, the rights of the person's groups
' for everyone else (nothing at all without any right).
Set permission = Server.CreateObject("corvane.Permission")
permission.openDB ConnStr()
If Session("personName") = "sysop" Or Session("personAccess") & "" <> "" Then
  Set rs = Server.CreateObject("ADODB.Recordset")
  permission.GetMenu1 rs
  Response.Write MenuLevel(permission, rs, 1)
  rs.Close
Else
  Response.Write "<p>没有可用的菜单。</p>"
End If

' The staff bar: everyone of the person's system but the system account, each opening that person's
' month calendar.
Set scheduler = Server.CreateObject("corvane.scheduler")
scheduler.Init ConnStr()
%></div><div id=staffbar></div>
<script>
var t=outlookbar.addtitle('员工日程');
<%= scheduler.GetMenu("person.personGroupID<>7") %>outlookbar.show('staffbar');
</script></div>
<iframe name=main class=main src='/scheduler/personWeek.asp'></iframe><%
WriteFoot
%>