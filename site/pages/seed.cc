// The demo office's seed data: a company with two systems, 30 staff with duties, a month of plans
// around today, access groups, a three-level menu, notices and 520 contacts. Deterministic but for
// the dates, which follow the day the database is created, and the salts of the password hashes.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <thread>

#include "corvane/ado.h"
#include "corvane/dates.h"
#include "corvane/error.h"
#include "corvane/registry.h"
#include "schema.h"
#include "site.h"

namespace corvane::site {

namespace {

struct Staff {
  const char* name;
  const char* login;
};

constexpr std::array<Staff, 30> kStaff = {{
    {"张伟", "zhangwei"},    {"王芳", "wangfang"},  {"李娜", "lina"},    {"刘洋", "liuyang"},
    {"陈静", "chenjing"},    {"杨磊", "yanglei"},   {"赵敏", "zhaomin"}, {"黄强", "huangqiang"},
    {"周杰", "zhoujie"},     {"吴霞", "wuxia"},     {"徐涛", "xutao"},   {"孙丽", "sunli"},
    {"马超", "machao"},      {"朱红", "zhuhong"},   {"胡斌", "hubin"},   {"郭峰", "guofeng"},
    {"何琳", "helin"},       {"高翔", "gaoxiang"},  {"林悦", "linyue"},  {"罗军", "luojun"},
    {"郑爽", "zhengshuang"}, {"梁勇", "liangyong"}, {"谢婷", "xieting"}, {"宋杨", "songyang"},
    {"唐亮", "tangliang"},   {"许晴", "xuqing"},    {"韩冰", "hanbing"}, {"冯刚", "fenggang"},
    {"邓超", "dengchao"},    {"曹阳", "caoyang"},
}};

// A small fixed generator, so that every fresh database holds the same rows.
struct Lcg {
  uint32_t state;
  uint32_t Next(uint32_t bound) {
    state = state * 1103515245u + 12345u;
    return (state >> 16) % bound;
  }
};

std::string Q(std::string_view text) { return "'" + std::string(text) + "'"; }
std::string N(long n) { return std::to_string(n); }

// The Argon2id hash of each password (corvane.Password), each with its own salt. One hash costs
// 70 to 90 ms of one core, so they are shared out among the machine's cores (at most 4): the 31
// accounts of a fresh database take about 1.5 s on two cores, 2.5 s on one.
std::vector<std::string> HashAll(const std::vector<std::string>& passwords) {
  std::vector<std::string> hashes(passwords.size());
  std::atomic<size_t> next{0};
  std::exception_ptr failure;
  std::atomic_flag failed;
  auto work = [&] {
    try {
      Object hasher = CreateObject("corvane.Password");
      for (size_t i; (i = next++) < passwords.size();)
        hashes[i] = hasher.Invoke("Hash", {Variant(passwords[i])}).ToString();
    } catch (...) {
      if (!failed.test_and_set()) failure = std::current_exception();
    }
  };
  size_t threads = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, 4);
  std::vector<std::jthread> helpers;
  for (size_t t = 1; t < std::min(threads, passwords.size()); ++t) helpers.emplace_back(work);
  work();
  helpers.clear();  // joins them
  if (failure) std::rethrow_exception(failure);
  return hashes;
}

void Add(std::vector<std::string>& out, std::string table, std::initializer_list<std::string> values) {
  std::string sql = "insert into " + table + " values(";
  bool first = true;
  for (const std::string& v : values) {
    if (!first) sql += ",";
    sql += v;
    first = false;
  }
  out.push_back(sql + ")");
}

void Menus(std::vector<std::string>& out) {
  struct M {
    int id;
    const char* name;
    int father;  // 0: top level (NULL)
    int order, system;
    const char* url;
  };
  static const M kMenus[] = {
      {1, "日常办公", 0, 1, 1, ""},
      {11, "通知公告", 1, 1, 1, "/notice.asp"},
      {12, "通讯录", 1, 2, 1, "/contact.asp"},
      {13, "文件上传", 1, 3, 1, "/upload.asp"},
      {2, "日程安排", 0, 2, 1, ""},
      {21, "我的日程", 2, 1, 1, ""},
      {211, "周计划", 21, 1, 1, "/scheduler/personWeek.asp"},
      {212, "月计划", 21, 2, 1, "/scheduler/personMonth.asp"},
      {213, "安排日程", 21, 3, 1, "/scheduler/manage.asp"},
      {22, "领导查看", 2, 2, 1, ""},
      {221, "全员周汇总", 22, 1, 1, "/scheduler/leaderWeek.asp"},
      {222, "全员月汇总", 22, 2, 1, "/scheduler/leaderMonth.asp"},
      {223, "经理周汇总", 22, 3, 1, "/scheduler/leader2Week.asp"},
      {224, "经理月汇总", 22, 4, 1, "/scheduler/leader2Month.asp"},
      {3, "系统管理", 0, 3, 1, ""},
      {31, "人员管理", 3, 1, 1, "/staff.asp"},
      {32, "权限管理", 3, 2, 1, "/permission/permission.asp"},
      {5, "客户管理", 0, 1, 2, ""},
      {51, "客户通讯录", 5, 1, 2, "/contact.asp"},
      {52, "公告", 5, 2, 2, "/notice.asp"},
  };
  for (const M& m : kMenus)
    Add(out, "menu",
        {N(m.id), Q(m.name), m.father ? N(m.father) : "NULL", N(m.order), N(m.system), Q(m.url)});

  // Access groups, their rights and members. Each person is in one group: the rights of several
  // groups would run together in "personAccess".
  Add(out, "AccessGroup", {"1", Q("管理员"), "1"});
  Add(out, "AccessGroup", {"2", Q("领导"), "1"});
  Add(out, "AccessGroup", {"3", Q("员工"), "1"});
  Add(out, "AccessGroup", {"4", Q("客户经理"), "2"});
  const std::vector<std::pair<int, std::vector<int>>> rights = {
      {1, {1, 11, 12, 13, 2, 21, 211, 212, 213, 22, 221, 222, 223, 224, 3, 31, 32}},
      {2, {1, 11, 12, 13, 2, 21, 211, 212, 213, 22, 221, 222, 223, 224}},
      {3, {1, 11, 12, 13, 2, 21, 211, 212, 213}},
      {4, {5, 51, 52}},
  };
  for (const auto& [group, menus] : rights)
    for (int menu : menus) Add(out, "accessMenu", {N(group), "1", N(menu)});
  auto member = [&](int group, int person) { Add(out, "accessPerson", {N(group), N(person)}); };
  member(1, 1);
  member(1, 2);
  for (int p = 3; p <= 9; ++p) member(2, p);
  for (int p = 10; p <= 26; ++p) member(3, p);
  for (int p = 27; p <= 31; ++p) member(4, p);
}

void Plans(std::vector<std::string>& out, double today) {
  static const char* kContent[] = {"客户拜访", "项目评审", "部门例会", "技术培训",
                                   "合同谈判", "产品演示", "年度总结"};
  // Addresses by location type: 1 本部, 2 北京, 3 外地, 4 国外.
  static const int kAddr[5][3] = {{0}, {1, 2, 1}, {3, 4, 3}, {5, 6, 7}, {8, 9, 8}};
  Lcg rng{20261122u};
  int planID = 1;
  for (int person = 2; person <= 31; ++person) {
    for (int offset = -20 + static_cast<int>(rng.Next(3)); offset <= 20;
         offset += 2 + static_cast<int>(rng.Next(4))) {
      uint32_t r = rng.Next(10);
      int type = r < 5 ? 1 : r < 7 ? 2 : r < 9 ? 3 : 4;
      int days = type == 1 ? 0 : static_cast<int>(rng.Next(3));
      int addr = kAddr[type][rng.Next(3)];
      int flag = rng.Next(10) == 0 ? 0 : 1;
      double start = AddDays(today, offset);
      Add(out, "personPlan",
          {N(planID++), N(person), Q(DateText(start)), Q(DateText(AddDays(start, days)) + " 18:00:00"),
           N(type), N(addr), Q(""), N(1 + static_cast<int>(rng.Next(4))), Q(kContent[rng.Next(7)]), Q(""),
           N(flag)});
    }
  }
  // Everyone of the first system has a public plan over today, so today's cells are never all empty.
  for (int person = 2; person <= 26; person += 3)
    Add(out, "personPlan",
        {N(planID++), N(person), Q(DateText(AddDays(today, -1))),
         Q(DateText(AddDays(today, 1)) + " 18:00:00"), "2", "3", Q("中关村"), "2", Q("北京出差"), Q(""),
         "1"});
}

void Business(std::vector<std::string>& out, double today) {
  static const char* kCities[] = {"北京", "上海", "广州", "深圳", "杭州", "南京", "成都", "武汉"};
  for (int i = 0; i < 8; ++i) Add(out, "city", {N(i + 1), Q(kCities[i])});
  Add(out, "noticeType", {"1", Q("通知")});
  Add(out, "noticeType", {"2", Q("公告")});
  Add(out, "noticeType", {"3", Q("新闻")});

  static const char* kSubjects[] = {"关于年终考核的",   "关于办公楼检修的", "关于元旦放假的",
                                    "关于新员工培训的", "关于差旅报销的",   "关于信息安全的",
                                    "关于消防演练的",   "关于季度会议的"};
  static const char* kKinds[] = {"通知", "安排", "说明", "公告"};
  Lcg rng{4242u};
  for (int i = 1; i <= 60; ++i) {
    std::string title = std::string(kSubjects[rng.Next(8)]) + kKinds[rng.Next(4)] + N(i);
    Add(out, "notice",
        {N(i), Q(title), N(1 + static_cast<int>(rng.Next(3))), N(1 + static_cast<int>(rng.Next(5))),
         Q(DateText(AddDays(today, -static_cast<int>(rng.Next(60))))), Q(kStaff[rng.Next(30)].name),
         Q("请各部门周知。")});
  }

  static const char* kSurnames[] = {"赵", "钱", "孙", "李", "周", "吴", "郑", "王", "冯", "陈",
                                    "褚", "卫", "蒋", "沈", "韩", "杨", "朱", "秦", "尤", "许"};
  static const char* kGiven[] = {"建国", "小红", "海涛", "志强", "雪梅", "晓东", "丽华", "国庆", "春燕",
                                 "文博", "思远", "一鸣", "佳怡", "子涵", "浩然", "梦琪", "宇轩", "欣怡",
                                 "俊杰", "诗涵", "天佑", "雨桐", "明辉", "秀英", "振华", "玉兰"};
  static const char* kFirms[] = {"华信", "东方", "长城", "新世纪", "金桥",
                                 "中天", "远航", "宏图", "博远",   "星辰"};
  static const char* kTrades[] = {"科技", "贸易", "咨询", "物流", "电子", "建设"};
  for (int i = 1; i <= 520; ++i) {
    std::string name = std::string(kSurnames[rng.Next(20)]) + kGiven[rng.Next(26)];
    std::string company = std::string(kFirms[rng.Next(10)]) + kTrades[rng.Next(6)] + "有限公司";
    char phone[32];
    std::snprintf(phone, sizeof phone, "13%d%08u", 5 + static_cast<int>(rng.Next(5)), rng.Next(100000000));
    Add(out, "contact",
        {N(i), Q(name), Q(company), N(1 + static_cast<int>(rng.Next(8))), Q(phone),
         Q("contact" + N(i) + "@example.com"),
         Q(DateText(AddDays(today, -static_cast<int>(rng.Next(400)))))});
  }
}

}  // namespace

std::vector<std::string> SeedStatements(double today) {
  today = DateOnly(today);
  std::vector<std::string> out;
  Add(out, "systems", {"1", Q("办公系统")});
  Add(out, "systems", {"2", Q("客户系统")});
  static const char* kDepts[] = {"总经理办公室", "市场部", "技术部", "财务部", "行政部"};
  for (int i = 0; i < 5; ++i) Add(out, "dept", {N(i + 1), Q(kDepts[i])});
  static const char* kDuties[] = {"总经理", "副总经理", "部门经理", "主管", "职员"};
  for (int i = 0; i < 5; ++i) Add(out, "personDuty", {N(i + 1), Q(kDuties[i])});

  // Person 1 is the system account: its name "sysop" sees every menu, and its person group 7 keeps it
  // out of the member lists. Its password is "sysop", everyone else's "123456", kept as hashes.
  std::vector<std::string> passwords{"sysop"};
  passwords.resize(1 + kStaff.size(), "123456");
  const std::vector<std::string> hashes = HashAll(passwords);
  Add(out, "person", {"1", Q("sysop"), Q("sysop"), Q(hashes[0]), "1", "1", "7", "1", Q(""), Q("")});
  for (int i = 0; i < 30; ++i) {
    int id = i + 2;
    int duty = id == 2 ? 1 : id <= 4 ? 2 : id <= 9 ? 3 : id <= 14 ? 4 : 5;
    int system = id <= 26 ? 1 : 2;
    Add(out, "person",
        {N(id), Q(kStaff[i].name), Q(kStaff[i].login), Q(hashes[1 + i]), N(duty), N(system), "1",
         N(1 + i % 5), Q("010-6" + N(5550000 + id)), Q(std::string(kStaff[i].login) + "@corvane.example")});
  }
  static const char* kAddrTypes[] = {"本部", "北京", "外地", "国外"};
  for (int i = 0; i < 4; ++i) Add(out, "planAddrType", {N(i + 1), Q(kAddrTypes[i])});
  static const std::pair<const char*, int> kAddrs[] = {{"总部大楼", 1}, {"分公司", 1}, {"北京办事处", 2},
                                                       {"中关村", 2},   {"上海", 3},   {"广州", 3},
                                                       {"深圳", 3},     {"东京", 4},   {"纽约", 4}};
  for (int i = 0; i < 9; ++i) Add(out, "planAddr", {N(i + 1), Q(kAddrs[i].first), N(kAddrs[i].second)});
  Add(out, "planFlag", {"1", Q("公开")});
  Add(out, "planFlag", {"0", Q("个人")});
  static const char* kPlanTypes[] = {"会议", "出差", "拜访", "其他"};
  for (int i = 0; i < 4; ++i) Add(out, "planType", {N(i + 1), Q(kPlanTypes[i])});

  Menus(out);
  Plans(out, today);
  Business(out, today);
  return out;
}

namespace {

// An index only makes pages faster: one that cannot be made (a table the database lacks, a user
// without the right to make indexes) is left out, and the site starts all the same.
void AddMissingIndexes(const std::shared_ptr<ado::Connection>& conn) {
  for (std::string_view sql : IndexStatements()) {
    try {
      conn->Execute(sql);
    } catch (const Error&) {
    }
  }
}

// A database made before passwords were hashed holds them as text: each becomes its hash (a Null
// password stays Null: nobody signs in with it). SQLite keeps a hash whole in the old, narrower
// column, whose declared width it does not enforce.
void HashPlainPasswords(const std::shared_ptr<ado::Connection>& conn) {
  Object hasher = CreateObject("corvane.Password");
  std::vector<int32_t> ids;
  std::vector<std::string> plain;
  ado::Recordset rs;
  rs.Open("select personID,password from person where password is not null", conn, 3);
  for (; !rs.Eof(); rs.MoveNext()) {
    Variant password = rs.Field(1);
    if (hasher.Invoke("IsHash", {password}).ToBool()) continue;
    ids.push_back(rs.Field(0).ToLong());
    plain.push_back(password.ToString());
  }
  rs.Close();
  if (ids.empty()) return;
  const std::vector<std::string> hashes = HashAll(plain);
  conn->Execute("begin");
  try {
    // A hash is letters, digits and "$=,+/" only: it goes into the SQL as it is.
    for (size_t i = 0; i < ids.size(); ++i)
      conn->Execute("update person set password=" + Q(hashes[i]) + " where personID=" + N(ids[i]));
    conn->Execute("commit");
  } catch (...) {
    conn->Execute("rollback");
    throw;
  }
}

// Which product the connection reaches: the servers name themselves in version(), which SQLite does
// not have.
SqlProduct ProductOf(const std::shared_ptr<ado::Connection>& conn) {
  std::string version;
  try {
    ado::Recordset rs;
    rs.Open("select version()", conn, 3);
    version = rs.Field(0).ToString();
    rs.Close();
  } catch (const Error&) {
    return SqlProduct::SQLite;
  }
  return version.find("MariaDB") != std::string::npos || version.find("MySQL") != std::string::npos
             ? SqlProduct::MariaDB
             : SqlProduct::PostgreSQL;
}

}  // namespace

bool PrepareDatabase(const std::string& connStr) {
  auto conn = std::make_shared<ado::Connection>();
  conn->Open(connStr);
  bool seeded = false;
  try {
    ado::Recordset probe;
    probe.Open("select count(*) from person", conn, 3);
    probe.Close();
  } catch (const Error&) {
    // No person table: a new database. Everything goes in as one transaction.
    const SqlProduct product = ProductOf(conn);
    conn->Execute("begin");
    try {
      for (std::string_view sql : SchemaStatements()) conn->Execute(sql);
      for (std::string_view sql : IndexStatements()) conn->Execute(sql);
      for (const std::string& sql : SeedStatements(Now())) conn->Execute(sql);
      for (const std::string& sql : AfterSeedStatements(product)) conn->Execute(sql);
      conn->Execute("commit");
    } catch (...) {
      conn->Execute("rollback");
      conn->Close();
      throw;
    }
    seeded = true;
  }
  if (!seeded) {
    try {
      AddMissingIndexes(conn);
      HashPlainPasswords(conn);
    } catch (...) {
      conn->Close();
      throw;
    }
  }
  conn->Close();
  return seeded;
}

}  // namespace corvane::site
