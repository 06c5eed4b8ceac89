<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><%
' Sign-in: the form, and on a post the check of the login name and password. A good sign-in starts a
' new session (under a new id, so that an id known before it opens nothing), fills it with the
' person's ids and rights, and goes to the start page.

Sub LoginForm(message, login)
  WriteHead "登录 - corvane 办公系统", "", ""
%><div class=login><h1>corvane 办公系统</h1>
<form method=post action='/login.asp'>
<p><label>用户名 <input type=text name=loginName value='<%= Html(login) %>' autofocus></label></p>
<p><label>密　码 <input type=password name=password></label></p>
<p><input type=submit value='登录'></p>
<% If message <> "" Then %><p class=message><%= Html(message) %></p>
<% End If %></form><p class=hint>演示账号：zhangwei / 123456（管理员组），sysop / sysop（全部菜单），lina / 123456（领导组），xutao / 123456（员工组）</p></div><%
  WriteFoot
End Sub

Dim login, rs, permission
If Request.ServerVariables("REQUEST_METHOD") <> "POST" Then
  LoginForm "", ""
  Response.End
End If

login = Request.Form("loginName") & ""
Set rs = Nothing
' Login names are letters and digits only, so they can go into the SQL as they are.
If IsAlnum(login) Then
  Set rs = Server.CreateObject("ADODB.Recordset")
  rs.Open "select personID,personName,systemID,password from person where loginName='" & login & "'", ConnStr(), 1
  If rs.EOF Then
    rs.Close
    Set rs = Nothing
  ElseIf rs("password") & "" <> Request.Form("password") & "" Then
    rs.Close
    Set rs = Nothing
  End If
End If
If rs Is Nothing Then
  LoginForm "用户名或密码不对。", login
  Response.End
End If

Session.Contents.RemoveAll
Session.RequestNewID
Session("personID") = CLng(rs("personID"))
Session("systemID") = CLng(rs("systemID"))
Session("personName") = rs("personName").Value
Randomize
Session("rnd") = CLng(Int(Rnd * 90000) + 10000)
Session("sc_curdate") = CStr(Date)
rs.Close

Set permission = Server.CreateObject("corvane.Permission")
permission.openDB ConnStr()
permission.GetPersonAccess
Response.Redirect "/main.asp"
%>