<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/table.inc"--><%
' The contacts, with fewer columns on arrival ("where 1=1": see notice.asp).
TablePage "通讯录", _
  "select contactID,contactName,company,cityID,phone,email,createDate from contact where 1=1 order by contactID,contactName", _
  "编号,姓名,单位,城市,电话,电子邮件,登记日期", _
  "contactID;contactName;company;select cityName,cityID from city;phone;email;createDate", _
  "contactID,contactName,company,cityID,phone,createDate", ""
%>