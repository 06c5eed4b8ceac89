// The older browser object model that the components' client script was written for, on current
// browsers. The scripts call document.all('someId') and then index the result like a function,
// arr(i), and read arr.length: current browsers give a plain element (one match) or an HTMLCollection
// (several), neither callable. Here document.all(name) always answers a callable list of every element
// with that id or name, so the edit/delete/debug switches and printing work unchanged. Bare element
// ids used as globals (npage, Cal1, calendar) already work in current browsers.
(function () {
  'use strict';
  function quote(text) {
    return String(text).replace(/\\/g, '\\\\').replace(/"/g, '\\"');
  }
  function all(name) {
    var nodes;
    if (typeof name === 'number') {
      nodes = [document.getElementsByTagName('*')[name]];
    } else {
      var q = quote(name);
      nodes = Array.prototype.slice.call(document.querySelectorAll('[id="' + q + '"],[name="' + q + '"]'));
    }
    var list = function (i) { return nodes[i]; };
    Object.defineProperty(list, 'length', { value: nodes.length });
    for (var i = 0; i < nodes.length; i++) list[i] = nodes[i];
    list.item = list;
    return list;
  }
  try {
    Object.defineProperty(document, 'all', { value: all, configurable: true, writable: true });
  } catch (e) {
    // Leave the browser's own document.all when it cannot be replaced.
  }
  window.corvaneCompat = true;
})();
