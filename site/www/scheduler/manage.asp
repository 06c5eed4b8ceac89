<%@ LANGUAGE="VBSCRIPT" %><!--#include virtual="/include/common.inc"--><!--#include virtual="/include/table.inc"--><%
' The signed-in person's plans on DNA. A click on a day of one's own calendar comes here with that
' day, which becomes the default of empty date fields.
'
' A person edits only their own plans: an insert or change must name the person, and a change, its
' form or a delete must name one of the person's plans; anything else is refused with 403. DNA's own
' filter (personID=) would not stop a change that moves a plan to another person.

' True when `planID` is one of the person's plans.
Function OwnsPlan(planID, person)
  Dim rs
  OwnsPlan = False
  If Not IsDigits(planID, 9) Then Exit Function
  Set rs = Server.CreateObject("ADODB.Recordset")
  rs.Open "select planID from personPlan where planID=" & planID & " and personID=" & person, ConnStr(), 1
  OwnsPlan = Not rs.EOF
  rs.Close
End Function

Dim myID, dt, action
GuardTable "personPlan"
myID = PersonID()
action = Param("action")
If action = "insert2" Or action = "update2" Then
  If Param("personID") <> CStr(myID) Then RefuseWrite "personID", "只能安排自己的日程。"
End If
If action = "update" Or action = "update2" Or action = "delete" Then
  If Not OwnsPlan(Param("planID"), myID) Then RefuseWrite "planID", "只能修改或删除自己的日程。"
End If

dt = Param("dt")
If IsDate(dt) Then Session("sc_curdate") = CStr(DateValue(dt))
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