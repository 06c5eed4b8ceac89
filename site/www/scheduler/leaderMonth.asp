<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/calendar.inc"--><%
' The calendar: the month of all staff.
CalendarPage "lm"
%>