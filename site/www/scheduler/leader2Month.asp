<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/calendar.inc"--><%
' The calendar: the month of the managers.
CalendarPage "lm2"
%>