#include "tsql/values/CollationNames.h"

#include <gtest/gtest.h>

namespace tsql::test {
namespace {

TEST(CollationNamesTest, WhatTheyMean) {
  using Id = CollationId;
  const std::pair<const char*, NamedCollation> kCollations[] = {
      {"latin1_general_ci_as", {Id::Default, "Latin1_General_CI_AS"}},
      {"CHINESE_PRC_CS_AS_WS", {Id::CaseSensitive, "Chinese_PRC_CS_AS_WS"}},
      {"Chinese_PRC_Stroke_90_CI_AS_KS", {Id::Default, "Chinese_PRC_Stroke_90_CI_AS_KS"}},
      {"japanese_xjis_140_cs_as_ks_ws_vss_utf8",
       {Id::CaseSensitive, "Japanese_XJIS_140_CS_AS_KS_WS_VSS_UTF8"}},
      {"Latin1_General_100_CI_AS_SC", {Id::Default, "Latin1_General_100_CI_AS_SC"}},
      {"greek_bin", {Id::Binary, "Greek_BIN"}},
      {"Latin1_General_100_BIN2_UTF8", {Id::Binary, "Latin1_General_100_BIN2_UTF8"}},
      {"SQL_Latin1_General_CP1_CS_AS", {Id::CaseSensitive, "SQL_Latin1_General_CP1_CS_AS"}},
      {"sql_altdiction_pref_cp850_ci_as", {Id::Default, "SQL_AltDiction_Pref_CP850_CI_AS"}},
      {"SQL_Latin1_General_CP850_BIN2", {Id::Binary, "SQL_Latin1_General_CP850_BIN2"}}};
  for (const auto& [name, collation] : kCollations) {
    const std::optional<NamedCollation> found = FindCollation(name);
    ASSERT_TRUE(found) << name;
    EXPECT_EQ(found->id, collation.id) << name;
    EXPECT_EQ(found->name, collation.name);
  }
}

TEST(CollationNamesTest, TheDatabasesOwnHasNone) {
  for (const char* name : {"Chinese_PRC_CI_AS", "chinese_prc_ci_as", "DATABASE_DEFAULT"})
    EXPECT_EQ(FindCollation(name), NamedCollation()) << name;
  EXPECT_EQ(CollationName(""), "Chinese_PRC_CI_AS");
  EXPECT_EQ(CollationName("Greek_BIN"), "Greek_BIN");
}

TEST(CollationNamesTest, AccentsAreNotIgnored) {
  for (const char* name :
       {"Latin1_General_CI_AI", "French_100_CS_AI_KS_WS", "SQL_Latin1_General_CP1_CI_AI"}) {
    EXPECT_FALSE(FindCollation(name)) << name;
    EXPECT_TRUE(IgnoresAccents(name)) << name;
  }
  EXPECT_FALSE(IgnoresAccents("Greek_CI_AS"));
  EXPECT_FALSE(IgnoresAccents("Nothing_CI_AI"));
}

TEST(CollationNamesTest, WhatIsNoName) {
  for (const char* name :
       {"", "_", "Greek", "Greek_", "Greek_CI", "Greek_AS", "Greek_CI_AS_", "Greek_CI_AS_AS",
        "Greek_BIN_CI_AS", "Greek_80_CI_AS", "GreekCI_AS", "SQL_Greek_CI_AS", "SQL_Latin1_General_CPX_CI_AS",
        "SQL_Latin1_General_CP_BIN", "Latin_General_BIN", "Chinese_BIN"})
    EXPECT_FALSE(FindCollation(name)) << name;
}

} // namespace
} // namespace tsql::test
