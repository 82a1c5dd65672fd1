// clsMCustBOM and clsMBOMRule: rules, feature items, groups of items, and the query that both classes offer.
#include <algorithm>
#include <functional>

#include "tests/src/custbom/CustBomFixture.h"

namespace mbom::test {
namespace {

const std::wstring kRuleSelect =
    L"SELECT t_ICItem_1.FNumber AS FEntryFNumber, dbo.t_BOMRuleEntry.FEntryItemID,  t_ICItem_1.FName AS "
    L"FEntryFName, "
    L"dbo.t_ICItem.FNumber, dbo.t_BOMRule.FItemID,  dbo.t_ICItem.FName , dbo.t_BOMRuleEntry.FRuleID  FROM "
    L"dbo.t_BOMRule INNER JOIN  dbo.t_BOMRuleEntry ON  dbo.t_BOMRule.FInterID = dbo.t_BOMRuleEntry.FInterID "
    L"INNER JOIN  "
    L"dbo.t_ICItem ON dbo.t_BOMRule.FItemID = dbo.t_ICItem.FItemID INNER JOIN  dbo.t_ICItem t_ICItem_1 ON "
    L"dbo.t_BOMRuleEntry.FEntryItemID = t_ICItem_1.FItemID ";

class CustBomRuleTest : public CustBomFixture {
 protected:
  void SetUp() override {
    CustBomFixture::SetUp();
    database_.Execute(
        L"INSERT INTO t_ICItem (FItemID, FNumber, FName, FParentID) VALUES (1, 'N1', 'one', 11), "
        L"(2, 'N2', 'two', 11), (3, 'N3', 'three', 12), (4, 'N4', 'four', 13), (5, 'N5', 'five', 99)");
    database_.Execute(
        L"INSERT INTO t_Item (FItemID, FItemClassID, FNumber, FName, FDetail) VALUES "
        L"(11, 4, '01', 'Bikes', 0), (12, 4, '02', 'a part', 1), (13, 1, '03', 'Customers', 0)");
    database_.Execute(L"INSERT INTO t_BOMRule (FInterID, FItemID) VALUES (1, 1), (2, 2), (3, 3)");
    database_.Execute(
        L"INSERT INTO t_BOMRuleEntry (FInterID, FEntryID, FEntryItemID, FGroupItemID, FRuleID) VALUES "
        L"(1, 1, 2, 0, 'Rel'), (1, 2, 3, 0, 'Rel'), (1, 3, 4, 7, 'Rel'), (1, 4, 5, 8, 'Rel'), "
        L"(1, 5, 3, 0, 'Mut'), (2, 1, 4, 0, 'Mut'), (2, 2, 4, 8, 'Rel'), (3, 1, 1, 0, 'Rel')");
  }
  // The statement that GetRuleByItem sends, and "item entry kind" of the rows it gives.
  std::wstring Statement(const wchar_t* items, const wchar_t* group, const wchar_t* relation) const {
    const Trace trace;
    RaisedBy([&] { custBom_.Call(L"GetRuleByItem", Dsn(), items, group, relation); });
    const Texts opened = trace.Details(L"Open");
    return opened.size() == 1
               ? opened[0].substr(kRuleSelect.size() * size_t{opened[0].starts_with(kRuleSelect)})
               : L"(none)";
  }
  Texts Rules(const wchar_t* items, const wchar_t* group, const wchar_t* relation) const {
    const Object rows = custBom_.Call(L"GetRuleByItem", Dsn(), items, group, relation).AsObject();
    Texts rules;
    for (; !rows.Get(L"EOF").AsBool(); rows.Call(L"MoveNext")) {
      const Object fields = rows.Get(L"Fields").AsObject();
      std::wstring rule;
      for (const wchar_t* name : {L"FItemID", L"FEntryItemID", L"FRuleID"})
        rule += fields.Get(L"Item", name).AsObject().Get(L"Value").As(VT_BSTR).AsText() + L" ";
      rules.push_back(rule);
    }
    std::sort(rules.begin(), rules.end());
    return rules;
  }

  const Object custBom_ = Hosted(L"clsMCustBOM");
  const Object rule_ = Hosted(L"clsMBOMRule");
};

// ---- GetRuleByItem

TEST_F(CustBomRuleTest, TheStatementsOfTheRules) {
  EXPECT_EQ(Statement(L"", L"", L""), L"");
  EXPECT_EQ(Statement(L"", L"7", L""), L"");
  EXPECT_EQ(Statement(L"1,2", L"", L"rel"),
            L" WHERE ((t_BOMRule.FItemID IN (1,2)) AND dbo.t_BOMRuleEntry.FEntryItemID  NOT IN (1,2) ) AND "
            L"t_BomRuleEntry.FRuleID='Rel'");
  EXPECT_EQ(
      Statement(L"1", L"7", L"REL"),
      L" WHERE ((t_BOMRule.FItemID IN (1)) AND dbo.t_BOMRuleEntry.FEntryItemID  NOT IN (1)  AND "
      L"(t_BOMRuleEntry.FGroupItemID=0 OR t_BOMRuleEntry.FGroupItemID=7)) AND t_BomRuleEntry.FRuleID='Rel'");
  EXPECT_EQ(Statement(L"1", L"7", L"Mut"),
            L" WHERE ((t_BOMRule.FItemID IN (1))  AND (t_BOMRuleEntry.FGroupItemID=0 OR "
            L"t_BOMRuleEntry.FGroupItemID=7)) AND t_BomRuleEntry.FRuleID='Mut'");
  EXPECT_EQ(Statement(L"1", L"", L"other"), L" WHERE ((t_BOMRule.FItemID IN (1)) )");
  EXPECT_EQ(Statement(L"", L"", L"Rel"), L" AND t_BomRuleEntry.FRuleID='Rel'");
}

TEST_F(CustBomRuleTest, RelationsLeadOutOfTheList) {
  EXPECT_EQ(Rules(L"1,2", L"", L"rel"), (Texts{L"1 3 Rel ", L"1 4 Rel ", L"1 5 Rel ", L"2 4 Rel "}));
  EXPECT_EQ(Rules(L"1", L"7", L"Rel"), (Texts{L"1 2 Rel ", L"1 3 Rel ", L"1 4 Rel "}));
  EXPECT_EQ(Rules(L"1,2", L"", L"MUT"), (Texts{L"1 3 Mut ", L"2 4 Mut "}));
  EXPECT_EQ(Rules(L"2", L"", L""), (Texts{L"2 4 Mut ", L"2 4 Rel "}));
}

TEST_F(CustBomRuleTest, ARuleLineNamesBothItems) {
  const Trace trace;
  const Object rows = custBom_.Call(L"GetRuleByItem", Dsn(), L"3", L"", L"").AsObject();
  EXPECT_EQ(ColumnsOf(rows), (Texts{L"FEntryFNumber", L"FEntryItemID", L"FEntryFName", L"FNumber", L"FItemID",
                                    L"FName", L"FRuleID"}));
  EXPECT_EQ(RowsOf(rows), Texts{L"N1|1|one|N3|3|three|Rel"});
  EXPECT_EQ(trace.Events(), Concat({SetUpCalls(),
                                    SetUpCalls(),
                                    {L"Open\t" + kRuleSelect + L" WHERE ((t_BOMRule.FItemID IN (3)) )",
                                     L"VoteComplete", L"VoteComplete"}}));
}

TEST_F(CustBomRuleTest, AKindWithoutItemsGoesOnWithTheLastJoinsCondition) {
  // There is no WHERE in front of the AND; behind a join's ON it is a condition all the same.
  EXPECT_EQ(Rules(L"", L"", L"Mut"), (Texts{L"1 3 Mut ", L"2 4 Mut "}));
}

// ---- GetTeZhenSubItems

TEST_F(CustBomRuleTest, ListsTheComponentsOfEveryBomInUse) {
  database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FBomType, FItemID, FUseStatus) VALUES (31, "
                    L"'F1', 4, 601, 1072), "
                    L"(32, 'F2', 4, 601, 1072), (33, 'F3', 4, 601, 1073)");
  database_.Execute(
      L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID) VALUES (31, 1, 2), (31, 2, 3), (32, 1, 2), "
      L"(33, 1, 4)");
  const Trace trace;
  const std::wstring items = custBom_.Call(L"GetTeZhenSubItems", Dsn(), L"601").AsText();
  EXPECT_EQ(trace.Events(),
            Concat({SetUpCalls(),
                    SetUpCalls(),
                    {L"Open\tSELECT a.FItemID FROM ICBOMChild a,ICBOM b WHERE a.FInterID=b.FInterID AND "
                     L"b.FUseStatus=1072 AND b.FItemID=601",
                     L"VoteComplete", L"VoteComplete"}}));
  EXPECT_EQ(items, L"2,3,2");
}

TEST_F(CustBomRuleTest, TakesTheNumberThatTheItemIdBeginsWith) {
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"GetTeZhenSubItems", Dsn(), L"abc"), Variant(L""));
  EXPECT_EQ(custBom_.Call(L"GetTeZhenSubItems", Dsn(), L"601 OR 1=1"), Variant(L""));
  const Texts opened = trace.Details(L"Open");
  ASSERT_EQ(opened.size(), 2u);
  EXPECT_TRUE(opened[0].ends_with(L" AND b.FItemID=0"));
  EXPECT_TRUE(opened[1].ends_with(L" AND b.FItemID=601"));
}

// ---- GetICItemParent

TEST_F(CustBomRuleTest, NamesTheGroupOfAnItem) {
  const Trace trace;
  const Object rows = rule_.Call(L"GetICItemParent", Dsn(), L"1").AsObject();
  EXPECT_EQ(trace.Events(),
            Concat({SetUpCalls(),
                    SetUpCalls(),
                    {L"Open\tselect t_icitem.fitemid,t_item.fitemid as groupid,t_item.fname as groupname "
                     L"from t_icitem "
                     L"left outer join t_item on t_icitem.fparentid=t_item.fitemid and t_item.fdetail=0 and "
                     L"fitemclassid=4  WHERE t_icitem.fitemid='1'",
                     L"VoteComplete", L"VoteComplete"}}));
  EXPECT_EQ(ColumnsOf(rows), (Texts{L"fitemid", L"groupid", L"groupname"}));
  EXPECT_EQ(RowsOf(rows), Texts{L"1|11|Bikes"});
}

TEST_F(CustBomRuleTest, AParentThatIsNoGroupOfMaterialsIsNull) {
  for (const wchar_t* item : {L"3", L"4", L"5"})
    EXPECT_EQ(RowsOf(rule_.Call(L"GetICItemParent", Dsn(), item).AsObject()),
              Texts{std::wstring(item) + L"|NULL|NULL"});
  EXPECT_EQ(RowsOf(rule_.Call(L"GetICItemParent", Dsn(), L"77").AsObject()), Texts{});
}

TEST_F(CustBomRuleTest, QuotesInAnItemIdAreDoubled) {
  const Trace trace;
  // The comparison with an int fails, but it is no syntax error: the literal is whole.
  const Raised raised = RaisedBy([&] { rule_.Call(L"GetICItemParent", Dsn(), L"1' or ''='"); });
  EXPECT_TRUE(trace.Details(L"Open")[0].ends_with(L"WHERE t_icitem.fitemid='1'' or ''''='''"));
  EXPECT_EQ(raised.description,
            L"Conversion failed when converting the varchar value '1' or ''='' to data type int.");
}

TEST_F(CustBomRuleTest, AQuoteFindsItsItemWhereIdsAreTexts) {
  database_.Execute(L"DROP TABLE t_ICItem");
  database_.Execute(L"CREATE TABLE t_ICItem (FItemID varchar(20) NOT NULL, FParentID int NOT NULL)");
  database_.Execute(L"INSERT INTO t_ICItem (FItemID, FParentID) VALUES ('7''A', 11), ('7', 11), ('''', 0)");
  const auto find = [this](const wchar_t* item) {
    return RowsOf(rule_.Call(L"GetICItemParent", Dsn(), item).AsObject());
  };
  EXPECT_EQ(find(L"7'A"), Texts{L"7'A|11|Bikes"});
  EXPECT_EQ(find(L"'"), Texts{L"'|NULL|NULL"});
  EXPECT_EQ(find(L"7' or '1'='1"), Texts{});
}

// ---- GetRecordSet

TEST_F(CustBomRuleTest, BothClassesRunAnyQuery) {
  for (const Object& object : {custBom_, rule_}) {
    Variant dsn(Dsn());
    Variant query(L"SELECT FItemID FROM t_ICItem WHERE FItemID < 3 ORDER BY FItemID");
    const Trace trace;
    const Object rows =
        object.Call(L"GetRecordSet", Variant::Reference(dsn), Variant::Reference(query)).AsObject();
    EXPECT_EQ(trace.Events(), Concat({SetUpCalls(), {L"Open\t" + query.AsText(), L"VoteComplete"}}));
    EXPECT_EQ(rows.Get(L"RecordCount"), Variant(2));
    EXPECT_EQ(rows.Get(L"CursorLocation"), Variant(3));
    EXPECT_EQ(RowsOf(rows), (Texts{L"1", L"2"}));
    EXPECT_EQ(dsn, Variant(Dsn()));
  }
}

TEST_F(CustBomRuleTest, AStatementWithoutRowsGivesAClosedRecordset) {
  const Object rows =
      custBom_.Call(L"GetRecordSet", Dsn(), L"UPDATE t_ICItem SET FName = 'x' WHERE FItemID = 1").AsObject();
  EXPECT_EQ(rows.Get(L"State"), Variant(0));
  EXPECT_EQ(database_.Value(L"SELECT FName FROM t_ICItem WHERE FItemID = 1"), L"x");
}

TEST_F(CustBomRuleTest, WhatFailsRisesWithTheUnitAborted) {
  const auto codeAndLastVote = [](const std::function<void()>& call) {
    const Trace trace;
    const HRESULT code = RaisedBy(call).code;
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
    return code;
  };
  for (const wchar_t* kind :
       {L"GetDataContext", L"BindDsn", L"GetCallerInfo", L"GetConnection", L"Open", L"VoteComplete"}) {
    const Fault fault(kind);
    EXPECT_EQ(codeAndLastVote([&] { custBom_.Call(L"GetRuleByItem", Dsn(), L"1", L"", L""); }), Fault::kCode);
    const Fault second(kind);
    EXPECT_EQ(codeAndLastVote([&] { rule_.Call(L"GetICItemParent", Dsn(), L"1"); }), Fault::kCode);
    const Fault third(kind);
    EXPECT_EQ(codeAndLastVote([&] { custBom_.Call(L"GetTeZhenSubItems", Dsn(), L"1"); }), Fault::kCode);
  }
  const Raised unknown = RaisedBy([&] { rule_.Call(L"GetRecordSet", Dsn(), L"SELECT * FROM NoTable"); });
  EXPECT_EQ(unknown.source, L"Microsoft OLE DB Provider for SQL Server");
  EXPECT_EQ(unknown.description, L"Invalid object name 'NoTable'.");
  EXPECT_TRUE(FAILED(codeAndLastVote([&] { rule_.Call(L"GetRecordSet", kBindsNothing, L"SELECT 1"); })));
}

} // namespace
} // namespace mbom::test
