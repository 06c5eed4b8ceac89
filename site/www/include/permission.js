// The menu-rights page: move menus between all menus and the group's, and send the group's ids
// joined by "*". A menu is added together with the menus above it, since a group's tree shows a
// child only under a parent the group holds.
function menuLevel(option) {
  var t = option.text;
  return t.indexOf('◎') >= 0 ? 3 : t.indexOf('○') >= 0 ? 2 : 1;
}

function hasMenu(select, value) {
  for (var i = 0; i < select.options.length; i++) if (select.options[i].value === value) return true;
  return false;
}

// Inserts a copy of `option` into `target`, keeping the order of the full list `all`.
function insertInOrder(all, target, option) {
  if (hasMenu(target, option.value)) return;
  var copy = new Option(option.text, option.value);
  var rank = {};
  for (var i = 0; i < all.options.length; i++) rank[all.options[i].value] = i;
  var before = null;
  for (var j = 0; j < target.options.length; j++) {
    if (rank[target.options[j].value] > rank[option.value]) { before = target.options[j]; break; }
  }
  target.add(copy, before);
}

function addRights() {
  var all = document.getElementById('allMenus'), group = document.getElementById('groupMenus');
  for (var i = 0; i < all.options.length; i++) {
    if (!all.options[i].selected) continue;
    insertInOrder(all, group, all.options[i]);
    var level = menuLevel(all.options[i]);
    for (var k = i - 1; k >= 0 && level > 1; k--) {
      if (menuLevel(all.options[k]) < level) {
        insertInOrder(all, group, all.options[k]);
        level = menuLevel(all.options[k]);
      }
    }
  }
}

function removeRights() {
  var group = document.getElementById('groupMenus');
  for (var i = group.options.length - 1; i >= 0; i--) if (group.options[i].selected) group.remove(i);
}

function collectRights(form) {
  var group = document.getElementById('groupMenus'), ids = [];
  for (var i = 0; i < group.options.length; i++) ids.push(group.options[i].value);
  form.permitSetStr.value = ids.join('*');
  return true;
}
