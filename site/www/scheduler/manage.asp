<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/table.inc"--><%
' The signed-in person's plans on DNA. A click on a day of one's own calendar comes here with that
' day, which becomes the default of empty date fields.
Dim myID, dt
RequireSignIn
dt = Param("dt")
If IsDate(dt) Then Session("sc_curdate") = CStr(DateValue(dt))
myID = PersonID()
dt = Session("sc_curdate")
TablePage "安排日程", _
  "select planID,planStartTime,planEndTime,planAddrTypeID,planAddrID,planTypeID,planContent,planFlagID,personID from personPlan where personID=" & _
    myID & " order by planStartTime DESC,planID", _
  "编号,开始日期,结束日期,地点类别,地点,类别,内容,公开,人员", _
  "planID;planStartTime;planEndTime;select planAddrTypeName,planAddrTypeID from planAddrType;select planAddrName,planAddrID from planAddr;select planTypeName,planTypeID from planType;planContent;select planFlagName,planFlagID from planFlag;select personName,personID from person", _
  "", _
  "<p class=links><a href='personWeek.asp?personID=" & myID & "&dt=" & dt & "'>周计划</a> " & _
    "<a href='personMonth.asp?personID=" & myID & "&dt=" & dt & "'>月计划</a></p>" & vbCrLf
%>