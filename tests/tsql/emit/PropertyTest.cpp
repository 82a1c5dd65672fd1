// Random queries on random small tables with NULLs, each answered by the engine and by a plain evaluation.
// TSQL_PROPERTY_COUNT sets how many queries are tried, TSQL_PROPERTY_SEED where the seeds start; a failure
// names the seed of its query.
#include <cstdlib>

#include "tests/tsql/EngineFixture.h"
#include "tests/tsql/emit/QueryGenerator.h"

namespace tsql::test {
namespace {

using namespace plain; // NOLINT(google-build-using-namespace): the whole test is about them

Lines Shown(const std::vector<Row>& rows, const std::vector<Kind>& kinds) {
  Lines lines;
  for (const Row& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) line += (i > 0 ? "|" : "") + Show(row[i], kinds[i]);
    lines.push_back(std::move(line));
  }
  return lines;
}

// The engine's rows as this test shows them.
struct Answer : Output {
  explicit Answer(const std::vector<Kind>& ofColumns) : kinds(ofColumns) {}
  void Row(std::span<const Value> values) override {
    std::string line;
    for (size_t i = 0; i < values.size(); ++i) {
      line += i > 0 ? "|" : "";
      line += values[i].kind == Value::Kind::Text ? "'" + Plain(std::string(values[i].text), kinds[i]) + "'"
                                                  : ToText(values[i]);
    }
    results.back().push_back(std::move(line));
  }

  const std::vector<Kind>& kinds;
};

uint64_t FromEnvironment(const char* name, uint64_t otherwise) {
  const char* text = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody sets it meanwhile
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

TEST(PropertyTest, QueriesAnswerAsPlainlyEvaluated) {
  const uint64_t first = FromEnvironment("TSQL_PROPERTY_SEED", 1);
  const uint64_t count = FromEnvironment("TSQL_PROPERTY_COUNT", 600);
  uint64_t compared = 0;
  for (uint64_t seed = first; seed < first + count; ++seed) {
    QueryGenerator generator(seed);
    const Query query = generator.MakeQuery();
    std::vector<Row> rows;
    try {
      rows = query.rows({});
    } catch (const Skip&) {
      continue;
    }
    // Ordered by all columns, the first ones that remain are determined too.
    std::vector<bool> descending;
    std::string sql = query.sql;
    const bool ordered = generator.Chance(50);
    if (ordered) {
      for (size_t i = 0; i < query.kinds.size(); ++i) {
        descending.push_back(generator.Chance(50));
        sql += (i == 0 ? " ORDER BY " : ", ") + std::to_string(i + 1) + (descending.back() ? " DESC" : "");
      }
      std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) {
        for (size_t i = 0; i < query.kinds.size(); ++i) {
          const int order = NullsFirst(a[i], b[i], query.kinds[i]);
          if (order != 0) return descending[i] ? order > 0 : order < 0;
        }
        return false;
      });
    }
    const bool isSingle = query.sql.find(" UNION ") == std::string::npos &&
                          query.sql.find(" EXCEPT ") == std::string::npos &&
                          query.sql.find(" INTERSECT ") == std::string::npos;
    if (ordered && isSingle && generator.Chance(30)) {
      const bool isDistinct = sql.starts_with("SELECT DISTINCT ");
      const auto top = static_cast<size_t>(generator.Upto(3));
      sql.insert(isDistinct ? 16 : 7, "TOP " + std::to_string(top) + " ");
      if (rows.size() > top) rows.resize(top);
    }
    const auto session = Session::Open(Database::Open(UniqueMemoryName(), OpenMode::Create));
    Output setup;
    ASSERT_TRUE(session->Execute(generator.Setup(), {}, setup));
    Answer answer(query.kinds);
    session->Execute(sql, {}, answer);
    Lines expected = Shown(rows, query.kinds);
    const std::string context = "seed " + std::to_string(seed) + "\n" + generator.Setup() + sql;
    ASSERT_TRUE(answer.errors.empty()) << answer.errors[0].number << " " << answer.errors[0].what() << "\n"
                                       << context;
    ASSERT_EQ(answer.results.size(), 1U) << context;
    Lines actual = answer.results[0];
    if (!ordered) {
      std::sort(expected.begin(), expected.end());
      std::sort(actual.begin(), actual.end());
    }
    ASSERT_EQ(actual, expected) << context;
    ++compared;
  }
  EXPECT_GT(compared, count * 9 / 10) << "too many queries overflow";
}

} // namespace
} // namespace tsql::test
