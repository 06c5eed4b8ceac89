<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><%
' The signed-in person's own password: the current one, then the new one twice. Only a POST changes
' it; a GET shows the form. The values are read from the form alone, never from the query string,
' so that no password ends up in a URL or a log. Wrong current passwords count against the sign-in
' throttle like failed sign-ins: a session left open does not let anyone guess the password here.

Const MinLength = 6
Const MaxLength = 64

Sub PasswordForm(message)
  WriteHead "修改密码", "", ""
%><div class=login><h1>修改密码</h1>
<form method=post action='/password.asp'>
<p><label>当前密码 <input type=password name=current autofocus></label></p>
<p><label>新 密 码 <input type=password name=newPassword></label></p>
<p><label>再输一次 <input type=password name=again></label></p>
<p><input type=submit value='修改'></p>
<% If message <> "" Then %><p class=message><%= Html(message) %></p>
<% End If %></form><p class=hint>新密码须为 <%= MinLength %> 到 <%= MaxLength %> 个字符。</p></div><%
  WriteFoot
End Sub

' Why the change cannot be made, or "" when it can: the form's values first, then the current
' password against `stored`, the person's hash.
Function Refusal(login, stored, hasher, throttle, address)
  Dim newPassword
  newPassword = Request.Form("newPassword") & ""
  If Len(newPassword) < MinLength Or Len(newPassword) > MaxLength Then
    Refusal = "新密码须为 " & MinLength & " 到 " & MaxLength & " 个字符。"
  ElseIf newPassword <> Request.Form("again") & "" Then
    Refusal = "两次输入的新密码不一致。"
  ElseIf throttle.Delay(login, address) > 0 Then
    Response.AppendToLog "password change refused: too many failures for person " & PersonID() & " from " & address
    Refusal = "尝试次数过多，请稍后再试。"
  ElseIf Not hasher.Verify(stored, Request.Form("current") & "") Then
    throttle.Failed login, address
    Response.AppendToLog "password change refused: wrong current password of person " & PersonID() & " from " & address
    Refusal = "当前密码不对。"
  Else
    throttle.Succeeded login, address
    Refusal = ""
  End If
End Function

Dim rs, conn, hasher, throttle, address, login, stored, message
If Request.ServerVariables("REQUEST_METHOD") <> "POST" Then
  PasswordForm ""
  Response.End
End If

Set rs = Server.CreateObject("ADODB.Recordset")
rs.Open "select loginName,password from person where personID=" & PersonID(), ConnStr(), 1
If rs.EOF Then
  rs.Close
  PasswordForm "找不到当前用户。"
  Response.End
End If
login = rs("loginName") & ""
stored = rs("password").Value
rs.Close

address = Request.ServerVariables("REMOTE_ADDR") & ""
Set hasher = Server.CreateObject("corvane.Password")
Set throttle = Server.CreateObject("corvane.SignInThrottle")
message = Refusal(login, stored, hasher, throttle, address)
If message = "" Then
  ' A hash is letters, digits and "$=,+/" only: it goes into the SQL as it is.
  Set conn = Server.CreateObject("ADODB.Connection")
  conn.Open ConnStr()
  conn.Execute "update person set password='" & hasher.Hash(Request.Form("newPassword") & "") & "' where personID=" & PersonID()
  conn.Close
  message = "密码已修改。"
End If
PasswordForm message
%>