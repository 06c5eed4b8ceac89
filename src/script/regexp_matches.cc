// Matches, Match and SubMatches: read-only views of one Execute's results. Their class names are the
// ones TypeName shows on the platform; each collection's default member (id 0) is Item, a Match's is
// Value. An index outside a collection raises 5.
#include "script/regexp_matches.h"

#include <memory>

#include "corvane/error.h"
#include "runtime/members.h"

namespace corvane::script::regexp {

namespace {

// The element at index `i` (0-based) of a collection; 5 when there is none.
template <class T>
const T& ItemAt(const std::vector<T>& items, const Args& args) {
  const int32_t i = Arg(args, 0).ToLong();
  if (i < 0 || static_cast<size_t>(i) >= items.size()) throw Error::InvalidCall();
  return items[i];
}

class SubMatches final : public Dispatch {
 public:
  explicit SubMatches(std::vector<Variant> values) : values_(std::move(values)) {}
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override { return values_; }

  const std::vector<Variant>& Values() const { return values_; }

 private:
  std::vector<Variant> values_;
};

class Match final : public Dispatch {
 public:
  explicit Match(MatchRecord record) : record_(std::move(record)) {}
  const ClassInfo& Info() const override;

  const MatchRecord& Record() const { return record_; }
  Object SubMatchesObject() const { return Object(std::make_shared<SubMatches>(record_.subMatches)); }

 private:
  MatchRecord record_;
};

class Matches final : public Dispatch {
 public:
  explicit Matches(std::vector<MatchRecord> records) {
    items_.reserve(records.size());
    for (MatchRecord& r : records) items_.emplace_back(Object(std::make_shared<Match>(std::move(r))));
  }
  const ClassInfo& Info() const override;
  std::vector<Variant> Elements() override { return items_; }

  const std::vector<Variant>& Items() const { return items_; }

 private:
  std::vector<Variant> items_;  // Match objects
};

const ClassInfo& SubMatches::Info() const {
  static const ClassInfo info{
      .className = "ISubMatches",
      .members =
          {
              Method<SubMatches>("Item", 0, [](SubMatches& s, Args& a) { return ItemAt(s.Values(), a); }),
              Reader<SubMatches>("Count", 1,
                                 [](SubMatches& s) { return static_cast<int32_t>(s.Values().size()); }),
          },
  };
  return info;
}

const ClassInfo& Match::Info() const {
  static const ClassInfo info{
      .className = "IMatch2",
      .members =
          {
              Reader<Match>("Value", 0, [](Match& m) { return m.Record().value; }),
              Reader<Match>("FirstIndex", 10001, [](Match& m) { return m.Record().firstIndex; }),
              Reader<Match>("Length", 10002, [](Match& m) { return m.Record().length; }),
              Reader<Match>("SubMatches", 10003, [](Match& m) { return m.SubMatchesObject(); }),
          },
  };
  return info;
}

const ClassInfo& Matches::Info() const {
  static const ClassInfo info{
      .className = "IMatchCollection2",
      .members =
          {
              Method<Matches>("Item", 0, [](Matches& m, Args& a) { return ItemAt(m.Items(), a); }),
              Reader<Matches>("Count", 1, [](Matches& m) { return static_cast<int32_t>(m.Items().size()); }),
          },
  };
  return info;
}

}  // namespace

Object MakeMatches(std::vector<MatchRecord> matches) {
  return Object(std::make_shared<Matches>(std::move(matches)));
}

}  // namespace corvane::script::regexp
