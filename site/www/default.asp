<%@ LANGUAGE="VBSCRIPT" %><%
' The site's root: the start page for whoever is signed in, else the sign-in page.
If Session("personID") & "" = "" Then Response.Redirect "/login.asp" Else Response.Redirect "/main.asp"
%>