<%@ LANGUAGE="VBSCRIPT" %><%
' Sign-out: the session ends after this page; the next request starts a new one.
Session.Abandon
Response.Redirect "/login.asp"
%>