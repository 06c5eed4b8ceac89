// The date picker of the record form: ShowCal(x, y, fieldName) opens a month beside the date field,
// keepCal() keeps it open while the mouse is over it; a click on a day writes "yyyy-mm-dd" into the
// field. The form writes <DIV id=calendar> once, after the form.
var calTimer = null, calField = null, calMonth = null;

function calPad(n) { return (n < 10 ? '0' : '') + n; }

function calFieldNamed(name) {
  var list = document.getElementsByName(name);
  return list.length ? list[0] : null;
}

function calRender() {
  var div = document.getElementById('calendar');
  if (!div) return;
  var y = calMonth.getFullYear(), m = calMonth.getMonth();
  var first = new Date(y, m, 1), days = new Date(y, m + 1, 0).getDate();
  var html = '<table class=cal cellspacing=0><tr><th><a href="#" onclick="calStep(-1);return false;">&lt;</a></th>' +
      '<th colspan=5>' + y + '年' + (m + 1) + '月</th><th><a href="#" onclick="calStep(1);return false;">&gt;</a></th></tr>' +
      '<tr class=wk><td>日</td><td>一</td><td>二</td><td>三</td><td>四</td><td>五</td><td>六</td></tr><tr>';
  for (var i = 0; i < first.getDay(); i++) html += '<td></td>';
  for (var d = 1; d <= days; d++) {
    var text = y + '-' + calPad(m + 1) + '-' + calPad(d);
    html += '<td><a href="#" class=day data-date="' + text + '" onclick="calPick(\'' + text + '\');return false;">' + d + '</a></td>';
    if ((first.getDay() + d) % 7 === 0 && d < days) html += '</tr><tr>';
  }
  div.innerHTML = html + '</tr></table>';
}

function ShowCal(x, y, fieldName) {
  var div = document.getElementById('calendar');
  calField = calFieldNamed(fieldName);
  if (!div || !calField) return;
  var m = /^(\d{4})-(\d{1,2})-(\d{1,2})/.exec(calField.value);
  calMonth = m ? new Date(+m[1], +m[2] - 1, 1) : new Date();
  calRender();
  // Placed under the field itself: the image's offsets are relative to a parent we do not know.
  var r = calField.getBoundingClientRect();
  div.style.left = (r.left + window.scrollX) + 'px';
  div.style.top = (r.bottom + window.scrollY + 2) + 'px';
  div.style.visibility = 'visible';
  div.onmouseout = function () { calTimer = setTimeout(hideCal, 800); };
  keepCal();
}

function keepCal() {
  if (calTimer) clearTimeout(calTimer);
  calTimer = null;
}

function hideCal() {
  var div = document.getElementById('calendar');
  if (div) div.style.visibility = 'hidden';
}

function calStep(n) {
  calMonth = new Date(calMonth.getFullYear(), calMonth.getMonth() + n, 1);
  calRender();
  keepCal();
}

function calPick(text) {
  if (calField) calField.value = text;
  hideCal();
}
