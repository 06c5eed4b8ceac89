<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/calendar.inc"--><%
' The calendar: the week of the managers.
CalendarPage "lw2"
%>