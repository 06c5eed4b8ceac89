// The staff bar: a list of titled groups of links. The scheduler writes
//   outlookbar.additem('name', t, 'url');
// lines; the page declares t = outlookbar.addtitle('...') before them and calls
// outlookbar.show('elementId') after them.
function OutlookBar() { this.titles = []; }

OutlookBar.prototype.addtitle = function (name) {
  this.titles.push({ name: name, items: [] });
  return this.titles.length - 1;
};

OutlookBar.prototype.additem = function (name, title, url) {
  if (this.titles[title]) this.titles[title].items.push({ name: name, url: url });
};

OutlookBar.prototype.show = function (id) {
  var host = document.getElementById(id);
  if (!host) return;
  host.innerHTML = '';
  this.titles.forEach(function (group) {
    var head = document.createElement('div');
    head.className = 'barTitle';
    head.textContent = group.name;
    var list = document.createElement('div');
    list.className = 'barItems';
    head.onclick = function () { list.style.display = list.style.display === 'none' ? '' : 'none'; };
    group.items.forEach(function (item) {
      var a = document.createElement('a');
      a.href = item.url;
      a.target = 'main';
      a.textContent = item.name;
      list.appendChild(a);
    });
    host.appendChild(head);
    host.appendChild(list);
  });
};

var outlookbar = new OutlookBar();
