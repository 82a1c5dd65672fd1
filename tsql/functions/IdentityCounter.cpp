#include "tsql/functions/IdentityCounter.h"

#include "tsql/values/Errors.h"

namespace tsql {

IdentityCounter::IdentityCounter(const TableInfo& table, std::optional<int64_t> last)
    : type_(table.columns[static_cast<size_t>(table.identityColumn)].type), seed_(table.seed),
      increment_(table.increment), last_(last) {}

int64_t IdentityCounter::Next() {
  const IdentityRange range = IdentityRangeOf(type_);
  int64_t next = seed_;
  if (last_) {
    const bool isBeyond =
        increment_ > 0 ? *last_ > range.largest - increment_ : *last_ < range.smallest - increment_;
    if (isBeyond) Fail(8115, {"IDENTITY", TypeName(type_.id)});
    next = *last_ + increment_;
  }
  last_ = ofLastRow_ = next;
  hasChanged_ = true;
  return next;
}

void IdentityCounter::TakeGiven(int64_t number) {
  ofLastRow_ = number;
  if (last_ && (increment_ > 0 ? number <= *last_ : number >= *last_)) return;
  last_ = number;
  hasChanged_ = true;
}

} // namespace tsql
