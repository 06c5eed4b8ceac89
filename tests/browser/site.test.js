// The demo site's script pages (site/www/*.asp) in headless Chromium: a staff member's menus and the
// pages refused to them; then an administrator signs in and works through a table page (sort, page,
// edit, add, search, columns, delete, debug, print), the staff page, a person's calendar and the
// leaders' views, a group's menu rights and members, renaming and deleting a group, an upload with a
// Chinese file name and signing out, on the GBK site and on a second site served in UTF-8 (code page
// 65001). Every step checks what the page shows and what the database holds.
//
//   node site.test.js [path/to/corvane-server]     (or CORVANE_SERVER=...)
// Screenshots go to CORVANE_SCREENSHOTS (default: build/browser-screenshots under the repository).
// With CORVANE_BROWSER_SERVER=<an ODBC connection string to PostgreSQL> the GBK site keeps its data in
// a database of its own that the test makes on that server (the role needs CREATEDB) and drops after;
// the database is read through psql. CORVANE_BROWSER_ON_PG=1 takes that server from CORVANE_TEST_PG
// (what scripts/db-servers.sh writes) and skips the run (exit 77) when there is none.
'use strict';
const { test, before, after } = require('node:test');
const assert = require('node:assert/strict');
const { spawn, execFileSync } = require('node:child_process');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { chromium } = require('playwright-core');

const repo = path.resolve(__dirname, '..', '..');
const serverBinary = process.argv[2] || process.env.CORVANE_SERVER || path.join(repo, 'build', 'server', 'corvane-server');
const shots = process.env.CORVANE_SCREENSHOTS || path.join(repo, 'build', 'browser-screenshots');
const work = fs.mkdtempSync(path.join(os.tmpdir(), 'corvane-browser-'));
const drives = path.join(work, 'drives');
const servers = [];
if (process.env.CORVANE_BROWSER_ON_PG === '1') {
  if (!process.env.CORVANE_TEST_PG) {
    console.log('skipped: no PostgreSQL server given (CORVANE_TEST_PG)');
    process.exit(77);
  }
  process.env.CORVANE_BROWSER_SERVER = process.env.CORVANE_TEST_PG;
}
const onServer = process.env.CORVANE_BROWSER_SERVER ? postgres(process.env.CORVANE_BROWSER_SERVER) : null;
const dbFile = onServer ? onServer.connectionString : path.join(work, 'site.db');

let browser, page, base;

// The keys of an ODBC connection string ("Key=value;Key={value; with ;}"), in lower case.
function odbcKeys(text) {
  const keys = {};
  for (let i = 0; i < text.length;) {
    const eq = text.indexOf('=', i);
    if (eq < 0) break;
    const key = text.slice(i, eq).trim().toLowerCase();
    let value, end;
    if (text[eq + 1] === '{') {
      end = text.indexOf('}', eq + 2);
      value = text.slice(eq + 2, end);
      end = text.indexOf(';', end);
    } else {
      end = text.indexOf(';', eq + 1);
      value = text.slice(eq + 1, end < 0 ? undefined : end);
    }
    keys[key] = value.trim();
    i = end < 0 ? text.length : end + 1;
  }
  return keys;
}

// A fresh database on the PostgreSQL server of `serverString`: its connection string and psql's
// command for it.
function postgres(serverString) {
  const k = odbcKeys(serverString);
  const name = `corvane_browser_${process.pid}`;
  const env = { ...process.env, PGPASSWORD: k.pwd };
  const psql = (database, query) => execFileSync(
    'psql', ['-h', k.server, '-p', k.port, '-U', k.uid, '-d', database, '-X', '-A', '-t', '-q', '-v', 'ON_ERROR_STOP=1',
             '-c', query], { encoding: 'utf8', env }).trim();
  psql(k.database, `create database ${name}`);
  return {
    connectionString: serverString.replace(/Database=[^;]*/i, `Database=${name}`),
    query: (q) => psql(name, q),
    drop: () => psql(k.database, `drop database if exists ${name} with (force)`),
  };
}

// One value or rows of a site's database, through Debian's sqlite3 shell (or psql). A date without a
// time reads as the day on both.
function sql(query, db = dbFile) {
  if (onServer && db === dbFile) return onServer.query(query).replace(/ 00:00:00/g, '');
  return execFileSync('sqlite3', ['-batch', '-noheader', db, query], { encoding: 'utf8' }).trim();
}

function today() {
  const d = new Date();
  const pad = (n) => String(n).padStart(2, '0');
  return `${d.getFullYear()}-${pad(d.getMonth() + 1)}-${pad(d.getDate())}`;
}

async function shot(name) {
  await page.screenshot({ path: path.join(shots, name + '.png'), fullPage: true });
}

// Clicks and waits for the page that the click loads.
async function clickAndLoad(locator) {
  await Promise.all([page.waitForLoadState('load'), page.waitForNavigation(), locator.click()]);
}

// Starts a corvane-server on a free port with its own database and drives; resolves to its address.
function startServer(db, driveRoot, more = []) {
  return new Promise((resolve, reject) => {
    const server = spawn(serverBinary, ['--port', '0', '--db', db, '--drives', driveRoot, '--no-access-log', ...more],
                         { cwd: work, stdio: ['ignore', 'pipe', 'inherit'] });
    servers.push(server);
    let out = '';
    const timer = setTimeout(() => reject(new Error('corvane-server did not start: ' + out)), 60000);
    server.stdout.on('data', (chunk) => {
      out += chunk;
      const m = /on (http:\/\/127\.0\.0\.1:\d+)\//.exec(out);
      if (m) {
        clearTimeout(timer);
        resolve(m[1]);
      }
    });
    server.once('exit', (code) => {
      clearTimeout(timer);
      reject(new Error('corvane-server exited with ' + code + ': ' + out));
    });
  });
}

before(async () => {
  fs.mkdirSync(shots, { recursive: true });
  base = await startServer(dbFile, drives);
  // A fresh profile folder each run (playwright passes it as --user-data-dir).
  browser = await chromium.launchPersistentContext(fs.mkdtempSync(path.join(work, 'profile-')), {
    executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
    headless: true,
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
           '--disable-background-networking', '--disable-component-update', '--disable-sync'],
    viewport: { width: 1280, height: 860 },
    locale: 'zh-CN',
  });
  page = browser.pages()[0] || await browser.newPage();
  page.on('pageerror', (e) => { throw new Error('script error on the page: ' + e.message); });
});

after(async () => {
  if (browser) await browser.close();
  for (const server of servers) {
    const exited = new Promise((resolve) => server.once('exit', resolve));
    server.kill('SIGTERM');
    const code = await exited;
    assert.equal(code, 0, 'corvane-server stops cleanly on SIGTERM');
  }
  if (onServer) onServer.drop();
  fs.rmSync(work, { recursive: true, force: true });
});

// A staff member (xutao, access group 员工) sees only the staff group's menus, and the pages of the
// other menus answer 403 when opened directly. Before the administrator's walk, which gives the staff
// group more rights.
test('a staff member', async () => {
  await page.goto(base + '/login.asp');
  await page.fill('input[name=loginName]', 'xutao');
  await page.fill('input[name=password]', '123456');
  await clickAndLoad(page.locator('input[type=submit]'));
  assert.match(page.url(), /\/main\.asp$/);
  const tree = await page.locator('.tree').innerText();
  for (const item of ['日常办公', '通知公告', '通讯录', '文件上传', '我的日程', '周计划', '月计划', '安排日程']) {
    assert.ok(tree.includes(item), item);
  }
  for (const item of ['系统管理', '人员管理', '权限管理', '领导查看', '全员周汇总']) assert.ok(!tree.includes(item), item);
  await shot('00-staff-main');
  for (const url of ['/staff.asp', '/permission/permission.asp']) {
    const reply = await page.goto(base + url);
    assert.equal(reply.status(), 403, url);
    assert.ok((await page.locator('body').innerText()).includes('没有权限'), url);
  }
  await page.goto(base + '/logout.asp');
  assert.match(page.url(), /\/login\.asp$/);
});

test('demo site', async (t) => {
  await t.test('signs in and shows the menu and the staff bar', async () => {
    await page.goto(base + '/login.asp');
    await page.fill('input[name=loginName]', 'zhangwei');
    await page.fill('input[name=password]', '123456');
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.match(page.url(), /\/main\.asp$/);
    const tree = await page.locator('.tree').innerText();
    for (const item of ['日常办公', '通知公告', '通讯录', '我的日程', '周计划', '权限管理']) assert.ok(tree.includes(item), item);
    const staff = Number(sql("select count(*) from person where systemID=1 and personGroupID<>7"));
    assert.equal(await page.locator('#staffbar a').count(), staff);
    await page.frameLocator('iframe[name=main]').locator('td.schh').first().waitFor();
    await shot('01-main');
  });

  await t.test('lists a table with the paging bar', async () => {
    await page.goto(base + '/contact.asp');
    assert.equal(await page.locator('table.tbl tr').count(), 21);
    const total = Number(sql('select count(*) from contact'));
    assert.ok((await page.locator('#page').innerText()).includes(`共${Math.ceil(total / 20)}页 共${total}项`));
  });

  const names = () => page.locator('table.tbl tr td:nth-child(3)').allInnerTexts()
      .then((cells) => cells.map((c) => c.replace(/\u00a0/g, '').trim()));

  await t.test('sorts a column and the arrow turns', async () => {
    await clickAndLoad(page.locator('table.tbl th a', { hasText: '姓名' }));
    assert.ok((await page.locator('table.tbl th', { hasText: '姓名' }).innerText()).includes('▲'));
    assert.deepEqual(await names(), sql('select contactName from contact order by contactName limit 20').split('\n'));
    await clickAndLoad(page.locator('table.tbl th a', { hasText: '姓名' }));
    assert.ok((await page.locator('table.tbl th', { hasText: '姓名' }).innerText()).includes('▼'));
    assert.deepEqual(await names(), sql('select contactName from contact order by contactName desc limit 20').split('\n'));
    await shot('02-sorted');
  });

  await t.test('pages forward', async () => {
    await clickAndLoad(page.locator('#page a', { hasText: '下一页' }));
    assert.equal(await page.locator('select[name=page] option[selected]').getAttribute('value'), '2');
    assert.match(await page.locator('table.tbl tr').nth(1).locator('td').first().innerText(), /21\s*$/);
    assert.deepEqual(await names(), sql('select contactName from contact order by contactName desc limit 20 offset 20').split('\n'));
  });

  await t.test('shows the edit icons and edits a row', async () => {
    const edit = page.locator('a#updateID[href*="action=update"]');
    assert.equal(await edit.first().isVisible(), false);
    await page.locator('table.menu td', { hasText: '修改' }).click();
    assert.equal(await edit.first().isVisible(), true);
    assert.equal(await page.locator('a#deleteID[href*="action=delete"]').first().isVisible(), false);
    await shot('03-edit-icons');
    const id = /contactID=(\d+)/.exec(await edit.first().getAttribute('href'))[1];
    await clickAndLoad(edit.first());
    assert.equal(await page.inputValue('input[name=contactName]'), sql(`select contactName from contact where contactID=${id}`));
    await page.fill('input[name=phone]', '13900001111');
    await shot('04-edit-form');
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.equal(sql(`select phone from contact where contactID=${id}`), '13900001111');
    assert.equal(await page.locator('table.tbl tr').count(), 21);  // back on the list
  });

  await t.test('adds a row, with the date picker', async () => {
    await clickAndLoad(page.locator('table.menu a', { hasText: '添加' }));
    await page.fill('input[name=contactName]', '测试联系人');
    await page.fill('input[name=company]', '测试科技有限公司');
    await page.selectOption('select[name=cityID]', { label: '上海' });
    await page.fill('input[name=phone]', '13800000000');
    assert.equal(await page.inputValue('input[name=createDate]'), today());  // the session's sc_curdate
    await page.locator('#Cal1').click();
    await page.locator('#calendar a.day', { hasText: /^15$/ }).click();
    const picked = await page.inputValue('input[name=createDate]');
    assert.match(picked, /-15$/);
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.ok((await page.content()).includes('插入成功'));
    assert.equal(sql("select count(*) from contact where contactName='测试联系人'"), '1');
    assert.equal(sql("select cityID||'|'||createDate from contact where contactName='测试联系人'"), `2|${picked}`);
  });

  await t.test('runs a search', async () => {
    await page.goto(base + '/contact.asp?action=search');
    assert.equal(await page.locator('select[name=cityID] option').first().innerText(), '');  // empty choice
    await page.fill('input[name=contactName]', '测试');
    // An empty date field starts with the session's current date, in a search form too: clear it.
    await page.fill('input[name=createDate]', '');
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.equal(sql("select count(*) from contact where contactName like '%测试%'"), '1');
    assert.ok((await page.locator('#page').innerText()).includes('共1项'));
    assert.deepEqual(await page.locator('table.tbl tr td:nth-child(3)').allInnerTexts().then((c) => c.map((x) => x.trim())),
                     ['测试联系人']);
    await shot('05-search');
  });

  await t.test('deletes a row after confirming', async () => {
    await page.locator('table.menu td', { hasText: '删除' }).click();
    const del = page.locator('a#deleteID[href*="action=delete"]');
    assert.equal(await del.first().isVisible(), true);
    let message = '';
    page.once('dialog', (d) => { message = d.message(); d.accept(); });
    await clickAndLoad(del.first());
    assert.match(message, /真的要删除第 1 条记录/);
    assert.equal(sql("select count(*) from contact where contactName='测试联系人'"), '0');
  });

  await t.test('sets the columns and the page size', async () => {
    await page.goto(base + '/contact.asp?action=setcol');
    for (const box of await page.locator('input[name=choseItem]').all()) await box.uncheck();
    for (const v of ['contactID', 'contactName', 'phone']) await page.check(`input[name=choseItem][value=${v}]`);
    await page.fill('input[name=pageSize]', '10');
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.deepEqual(await page.locator('table.tbl th').allInnerTexts().then((h) => h.map((x) => x.replace(/[▲▼△▽]/g, '').trim())),
                     ['序号', '编号', '姓名', '电话']);
    assert.equal(await page.locator('table.tbl tr').count(), 11);
    await shot('06-columns');
  });

  await t.test('prints with the controls hidden, and shows the debug trace', async () => {
    let message = '';
    page.once('dialog', (d) => { message = d.message(); d.dismiss(); });
    await page.locator('table.menu td', { hasText: '打印' }).click();
    assert.equal(message, '打印本页?');
    assert.equal(await page.locator('#npage').isVisible(), false);  // restored after the dialog
    assert.equal(await page.locator('div#ctrlDiv').first().isVisible(), true);

    await page.goto(base + '/notice.asp?debug=1');
    const trace = page.locator('span#debugID').first();
    assert.equal(await trace.isVisible(), false);
    await page.locator('table.menu td', { hasText: '调试信息' }).click();
    assert.equal(await trace.isVisible(), true);
    await page.goto(base + '/notice.asp?debug=0');
    assert.equal(await page.locator('span#debugID').count(), 0);
  });

  await t.test("opens a person's month and week and moves a month back", async () => {
    await page.goto(base + '/scheduler/personMonth.asp?personID=2');
    const now = new Date();
    const label = () => page.locator('.calhead .select').innerText();
    assert.ok((await label()).includes(`${now.getFullYear()}年${now.getMonth() + 1}月`));
    assert.ok((await page.locator('.calhead .who').innerText()).startsWith('张伟-'));
    await shot('07-month');
    await clickAndLoad(page.locator('.calhead a:has(img[src*="jian1"])'));
    const prev = new Date(now.getFullYear(), now.getMonth() - 1, 1);
    const ym = `${prev.getFullYear()}-${String(prev.getMonth() + 1).padStart(2, '0')}`;
    assert.ok((await label()).includes(`${prev.getFullYear()}年${prev.getMonth() + 1}月`));
    const places = sql(`select distinct planAddrName from personPlan p join planAddr a on p.planAddrID=a.planAddrID ` +
                       `where personID=2 and planFlagID=1 and planStartTime>='${ym}-01' and planStartTime<'${now.getFullYear()}-${String(now.getMonth() + 1).padStart(2, '0')}-01'`).split('\n').filter(Boolean);
    const grid = await page.locator('table').last().innerText();
    for (const place of places) assert.ok(grid.includes(place), place);

    await page.goto(base + '/scheduler/personWeek.asp?personID=2');
    assert.equal(await page.locator('td.schh').count(), 7);
    // Everything over today of one's own, whatever its flag (dates compare as text, as the SQL does).
    const t0 = today();
    const todays = sql(`select planAddrTypeName||':'||planAddrName from personPlan p join planAddr a on p.planAddrID=a.planAddrID ` +
                       `join planAddrType t on p.planAddrTypeID=t.planAddrTypeID ` +
                       `where personID=2 and planStartTime<='${t0}' and planEndTime>='${t0}'`).split('\n').filter(Boolean);
    assert.ok(todays.length > 0);
    const content = await page.content();
    for (const plan of todays) assert.ok(content.includes(plan), plan);
    await shot('08-week');
  });

  await t.test('a click on a day of one\'s own month opens manage.asp, which adds a plan', async () => {
    await page.goto(base + '/scheduler/personMonth.asp?personID=2');
    const now = new Date();
    const day = `${now.getFullYear()}-${String(now.getMonth() + 1).padStart(2, '0')}-10`;
    await clickAndLoad(page.locator(`td[onclick*="manage('${day}')"]`));
    assert.match(page.url(), /\/scheduler\/manage\.asp\?personID=2&dt=/);
    await clickAndLoad(page.locator('table.menu a', { hasText: '添加' }));
    assert.equal(await page.inputValue('input[name=planStartTime]'), day);  // the clicked day
    await page.selectOption('select[name=planAddrTypeID]', { label: '外地' });
    await page.selectOption('select[name=planAddrID]', { label: '广州' });
    await page.selectOption('select[name=planTypeID]', { label: '拜访' });
    await page.selectOption('select[name=planFlagID]', { label: '公开' });
    await page.fill('input[name=planContent]', '测试计划');
    await shot('09-manage');
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.ok((await page.content()).includes('插入成功'));
    assert.equal(sql("select personID||'|'||planStartTime||'|'||planEndTime||'|'||planAddrID||'|'||planFlagID " +
                     "from personPlan where planContent='测试计划'"), `2|${day}|${day}|6|1`);
    await page.goto(base + '/scheduler/personMonth.asp?personID=2');
    assert.ok((await page.locator(`td[onclick*="manage('${day}')"]`).innerText()).includes('外地:广州'));
  });

  await t.test("saves a group's menu rights and members", async () => {
    await page.goto(base + '/permission/permissionset.asp?id=3');
    await page.selectOption('#allMenus', ['221']);
    await page.click('#addRight');
    const held = await page.locator('#groupMenus option').evaluateAll((o) => o.map((x) => x.value));
    assert.ok(held.includes('221') && held.includes('22'), held.join(','));
    await shot('10-rights');
    await clickAndLoad(page.locator('#saveRights'));
    assert.ok((await page.locator('.message').innerText()).includes('权限修改成功'));
    const saved = sql('select accessMenuID from accessMenu where accessGroupID=3 order by accessMenuID').split('\n');
    assert.deepEqual(saved.map(Number), held.map(Number).sort((a, b) => a - b));

    await page.goto(base + '/permission/permission.asp');
    const groups = Number(sql('select count(*) from AccessGroup where systemID=1'));
    assert.equal(await page.locator('#groups tr').count(), groups + 1);
    await page.fill('form.add input[name=name]', '测试组');
    await clickAndLoad(page.locator('form.add input[type=submit]'));
    assert.equal(sql("select systemID from AccessGroup where accessGroupName='测试组'"), '1');
    assert.equal(await page.locator('#groups tr').count(), groups + 2);
    await shot('11-groups');

    await page.goto(base + '/permission/permissionMan.asp?id=2');
    await page.check('input[name=checkbox][value="12"]');
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.ok((await page.locator('.message').innerText()).includes('人员修改成功'));
    assert.equal(sql('select count(*) from accessPerson where accessGroupID=2 and accessPersonID=12'), '1');
  });

  await t.test('renames and deletes a group', async () => {
    const id = sql("select accessGroupID from AccessGroup where accessGroupName='测试组'");
    await page.goto(base + '/permission/permission.asp');
    await clickAndLoad(page.locator(`#groups a[href="permission.asp?ac=edit&id=${id}"]`));
    assert.equal(await page.inputValue('form:has(input[value=rename]) input[name=name]'), '测试组');
    await page.fill('form:has(input[value=rename]) input[name=name]', '测试组二');
    await clickAndLoad(page.locator('form:has(input[value=rename]) input[type=submit]'));
    assert.ok((await page.locator('.message').innerText()).includes('已改名为：测试组二'));
    assert.equal(sql(`select accessGroupName from AccessGroup where accessGroupID=${id}`), '测试组二');
    // A name with a quote is refused (400) and changes nothing.
    await page.goto(base + `/permission/permission.asp?ac=edit&id=${id}`);
    await page.fill('form:has(input[value=rename]) input[name=name]', "x'y");
    await clickAndLoad(page.locator('form:has(input[value=rename]) input[type=submit]'));
    assert.ok((await page.locator('.message').innerText()).includes('不能含单引号'));
    assert.equal(sql(`select accessGroupName from AccessGroup where accessGroupID=${id}`), '测试组二');

    await page.goto(base + '/permission/permission.asp');  // the refusal's page (400) has no list
    await clickAndLoad(page.locator(`#groups a[href="permission.asp?ac=del&id=${id}"]`));
    assert.equal(sql(`select count(*) from AccessGroup where accessGroupID=${id}`), '0');
    assert.equal(await page.locator('#groups tr').count(), Number(sql('select count(*) from AccessGroup where systemID=1')) + 1);
  });

  await t.test("lists the system's staff, and the leaders' views show everyone or the managers", async () => {
    await page.goto(base + '/staff.asp');
    const staff = Number(sql('select count(*) from person where systemID=1'));
    assert.ok((await page.locator('#page').innerText()).includes(`共${staff}项`));

    const people = sql("select personName||'|'||dutyID from person where systemID=1 and personGroupID<>7")
        .split('\n').map((row) => row.split('|'));
    const outsider = sql('select personName from person where systemID=2 limit 1');
    await page.goto(base + '/scheduler/leaderWeek.asp');
    let grid = await page.locator('body').innerText();
    for (const [name] of people) assert.ok(grid.includes(name), name);
    assert.ok(!grid.includes(outsider), outsider);
    await page.goto(base + '/scheduler/leader2Month.asp');
    grid = await page.locator('body').innerText();
    for (const [name, duty] of people) assert.equal(grid.includes(name), Number(duty) <= 3, name);
  });

  // An upload of a Chinese-named file with a Chinese remark: the file is found under its name.
  async function upload(site, db, driveRoot, name, remark, screenshot) {
    const file = path.join(work, name);
    fs.writeFileSync(file, 'hello 上传\n');
    await page.goto(site + '/upload.asp');
    await page.setInputFiles('input[name=file1]', file);
    await page.fill('input[name=remark]', remark);
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.ok((await page.locator('#uploadMessage').innerText()).includes('上传成功：' + name));
    assert.equal(sql("select fileName||'|'||fileSize||'|'||remark from upload", db), `${name}|${fs.statSync(file).size}|${remark}`);
    assert.equal(fs.readFileSync(path.join(driveRoot, 'd', 'up', '2', name), 'utf8'), 'hello 上传\n');
    await shot(screenshot);
  }

  await t.test('uploads a file with a Chinese name', () => upload(base, dbFile, drives, '测试文件.txt', '季度报告', '12-upload'));

  await t.test('keeps the pages\' script to itself, and signs out', async () => {
    for (const file of ['/include/common.inc', '/include/table.inc', '/Include/COMMON.INC']) {
      const reply = await page.request.get(base + file);
      assert.equal(reply.status(), 404, file);
    }
    assert.ok(!(await (await page.request.get(base + '/login.asp')).text()).includes('<%'));
    await page.goto(base + '/logout.asp');
    assert.match(page.url(), /\/login\.asp$/);
    await page.goto(base + '/main.asp');
    assert.match(page.url(), /\/login\.asp$/);
    await page.goto(base + '/');
    assert.match(page.url(), /\/login\.asp$/);
  });

  await t.test('on a UTF-8 site too, where two Chinese names stay apart', async () => {
    const db = path.join(work, 'utf8.db'), driveRoot = path.join(work, 'utf8-drives');
    const site = await startServer(db, driveRoot, ['--codepage', '65001']);
    await page.goto(site + '/login.asp');
    await page.fill('input[name=loginName]', 'zhangwei');
    await page.fill('input[name=password]', '123456');
    await clickAndLoad(page.locator('input[type=submit]'));
    await upload(site, db, driveRoot, '张三.txt', '第一季度', '13-upload-utf8');
    fs.writeFileSync(path.join(work, '李四.txt'), 'other\n');
    await page.setInputFiles('input[name=file1]', path.join(work, '李四.txt'));
    await clickAndLoad(page.locator('input[type=submit]'));
    assert.equal(fs.readFileSync(path.join(driveRoot, 'd', 'up', '2', '张三.txt'), 'utf8'), 'hello 上传\n');
    assert.equal(fs.readFileSync(path.join(driveRoot, 'd', 'up', '2', '李四.txt'), 'utf8'), 'other\n');
  });
});
