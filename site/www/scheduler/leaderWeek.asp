<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/calendar.inc"--><%
' The calendar: the week of all staff.
CalendarPage "lw"
%>