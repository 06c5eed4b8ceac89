<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/table.inc"--><%
' The notices. A table with code look-ups needs a filter: the record form scans the filter's fixed
' fields, and a table without any has none to scan (the form then fails with "subscript out of
' range"); "where 1=1" fixes no field.
TablePage "通知公告", _
  "select noticeID,title,noticeTypeID,deptID,publishDate,author from notice where 1=1 order by publishDate DESC,noticeID", _
  "编号,标题,类别,发布部门,发布日期,发布人", _
  "noticeID;title;select noticeTypeName,noticeTypeID from noticeType;select deptName,deptID from dept;publishDate;author", _
  "", ""
%>