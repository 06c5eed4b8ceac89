<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/table.inc"--><%
' The staff of the signed-in person's system; the filter fixes the system in forms and writes.
TablePage "人员管理", _
  "select personID,personName,loginName,dutyID,deptID,phone,email,systemID from person where systemID=" & _
    CLng(Session("systemID")) & " order by dutyID,personID", _
  "编号,姓名,登录名,职务,部门,电话,电子邮件,系统", _
  "personID;personName;loginName;select dutyName,dutyID from personDuty;select deptName,deptID from dept;phone;email;select systemName,systemID from systems", _
  "", ""
%>