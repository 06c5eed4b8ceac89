<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/calendar.inc"--><%
' The calendar: a person's week.
CalendarPage "w"
%>