<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><%
' Sign-in: the form, and on a post the check of the login name and password. A good sign-in starts a
' new session (under a new id, so that an id known before it opens nothing), fills it with the
' person's ids and rights, and goes to the start page.
'
' Neither the answer nor its time tells whether an account exists: a name that is unknown (or not a
' possible name at all) is checked against a hash of a password nobody knows, at the same cost as a
' real one, and gets the same message as a wrong password. Failures are counted per name and per
' client address (corvane.SignInThrottle); while a wait runs, an attempt is refused without looking
' at its password. Every failure and refusal goes to the server's log.

' The hash of a random password that was thrown away, made by corvane.Password at the cost it uses
' for every account (m=65536,t=2,p=1): keep the two the same, or an unknown name answers faster.
Const DummyHash = "$argon2id$v=19$m=65536,t=2,p=1$06RZEPzJJmP1ddYMdSrUrQ$CH2iXURRkVOn0XhC2UofBM+sL1Zyjtdqr7QGwpJgQpQ"

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

' The login name as the log shows it: only a possible name goes there as it is.
Function LogName(login)
  If IsAlnum(login) And Len(login) <= 50 Then LogName = login Else LogName = "(invalid)"
End Function

' Refuses the attempt: a line in the log, the form again with `message`, and the page ends.
Sub Refuse(message, login, address)
  Response.AppendToLog "sign-in failed: " & LogName(login) & " from " & address
  LoginForm message, login
  Response.End
End Sub

Dim login, address, rs, found, stored, hasher, throttle, permission
If Request.ServerVariables("REQUEST_METHOD") <> "POST" Then
  LoginForm "", ""
  Response.End
End If

login = Request.Form("loginName") & ""
address = Request.ServerVariables("REMOTE_ADDR") & ""
Set throttle = Server.CreateObject("corvane.SignInThrottle")
If throttle.Delay(login, address) > 0 Then Refuse "登录失败次数过多，请稍后再试。", login, address

Set hasher = Server.CreateObject("corvane.Password")
Set rs = Server.CreateObject("ADODB.Recordset")
found = False
stored = DummyHash
' Login names are letters and digits only, so they can go into the SQL as they are.
If IsAlnum(login) Then
  rs.Open "select personID,personName,systemID,password from person where loginName='" & login & "'", ConnStr(), 1
  found = Not rs.EOF
  If found Then
    If hasher.IsHash(rs("password")) Then stored = rs("password").Value
  End If
End If
' Verify runs whatever was found: the time is the same for every name.
If Not (hasher.Verify(stored, Request.Form("password") & "") And found) Then
  throttle.Failed login, address
  Refuse "用户名或密码不对。", login, address
End If
throttle.Succeeded login, address

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