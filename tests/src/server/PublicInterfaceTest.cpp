// The public names and parameters, as clients are written against them: every class with its methods, spelled
// as they have always been. The type library, the tables that serve late-bound calls and the objects
// themselves are each compared with this list.
#include <gtest/gtest.h>
#include <objbase.h>
#include <oleauto.h>

#include <algorithm>

#include "com/Module.h"
#include "src/server/Tables.h"
#include "tests/src/server/LoadedDll.h"
#include "tests/src/server/TypeDescriptions.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::DispatchTable;
using com::Member;
using com::Parameter;
using com::Ptr;
using com::Variant;
using Texts = std::vector<std::wstring>;

// A method reads "Name(parameter type, …) result"; "byref" is a parameter that is written back, "= value" one
// that may be left out and has that value then.
struct PublicClass {
  const wchar_t* name;
  const DispatchTable& (*table)();
  std::vector<const wchar_t*> methods;
};

void PrintTo(const PublicClass& publicClass, std::ostream* out) {
  *out << com::ToUtf8(publicClass.name);
}

std::vector<PublicClass> AllClasses() {
  return {
      {L"BomUpdate",
       com::TableOf<BomUpdate>,
       {
           L"BeginSave(sDsn text, byref SaveVect object, byref ReturnMsg text) boolean",
           L"EndSave(sDsn text, byref SaveVect object, byref ReturnMsg text) boolean",
           L"UpdateIcBomStatus(sDsn text, lBomNumber text) boolean",
           L"AddBomGroup(sDsn text, tDict object, byref NewGroupInterId long = 0) boolean",
           L"UpdateBomGroup(sDsn text, tDict object, sFilter text) boolean",
           L"DeleteBom(sDsn text, sFilter text) boolean",
           L"DeleteBomGroup(sDsn text, sFilter text) boolean",
           L"UpdateBOM(sDsn text, tVect object, sFilter text) boolean",
           L"CheckBomUsed(sDsn text, FInterID long, byref strInfo text) long",
           L"SetVisibelBySysProfile(sDsn text, sVal text) boolean",
       }},
      {L"CBomCheck",
       com::TableOf<CBomCheck>,
       {
           L"BomCheck(sDsn text, lInterID long, sBillNo text, lEmpID long, byref strMsg text) long",
           L"BomUndoCheck(sDsn text, lInterID long, sBillNo text, lEmpID long, lType long = 0, byref strMsg "
           L"text = '') long",
           L"GetBomDelInfo(sDsn text, lInterID long, sBillNo text, byref strMsg text) long",
           L"GetBomModifyInfo(sDsn text, lInterID long, sBillNo text, byref strMsg text) long",
       }},
      {L"BomView",
       com::TableOf<BomView>,
       {
           L"GetBomGroupList(sDsn text, GroupVect object, FilterDict object, bLongNumber boolean, bBomView "
           L"boolean = False) object",
           L"GetBomLstInfo(sDsn text, GroupVect object, FilterDict object, bLongNumber boolean, byref dDict "
           L"object = Nothing, byref bIsFind boolean = False) object",
           L"GetBomList(sDsn text, sFilter text = '', sOrder text = '') object",
           L"GetCustBomList(sDsn text, sFilter text = '', sOrder text = '') object",
           L"GetBomSimplifyList(sDsn text, sFilter text = '', sFilter1 text = '', sOrder text = '') object",
           L"GetCustBomSimplifyList(sDsn text, sFilter text = '', sFilter1 text = '', sOrder text = '') "
           L"object",
           L"GetBomSimplifyListEx(sDsn text, sFilter text = '', sFilter1 text = '', sOrder text = '', "
           L"sLookType text = '') object",
           L"ExistsEcnBill(sDsn text) boolean",
           L"GetBomTitle(sDsn text, sFilter text = '', bIsCustBom boolean = False) object",
           L"GetBomEntryTitle(sDsn text, sFilter text = '', bIsCustBom boolean = False) object",
           L"GetBomUserDefinedTitle(sDsn text, sFilter text = '') object",
           L"GetBomEntryUserDefinedTitle(sDsn text, sFilter text = '') object",
           L"GetCustBomTitle(sDsn text, sFilter text = '') object",
           L"GetCustBomEntryTitle(sDsn text, sFilter text = '') object",
           L"GetBomLdgInfo(sDsn text, sFilter text = '', sOrder text = '') object",
           L"GetBomEntryLdgInfo(sDsn text, aType long = 0, sFilter text = '', sOrder text = '', dctFilter "
           L"object = Nothing) object",
           L"GetCustBomLdgInfo(sDsn text, sFilter text = '', sOrder text = '') object",
           L"GetCustBomEntryLdgInfo(sDsn text, aType long = 0, sFilter text = '', sOrder text = '') object",
       }},
      {L"clsReadUserDefined",
       com::TableOf<clsReadUserDefined>,
       {
           L"GetUserDefinedValue(sDsn text, pBillTranType text, byref rs object, isBillHead boolean = True) "
           L"object",
       }},
      {L"CBomFunction",
       com::TableOf<CBomFunction>,
       {
           L"GetMaxNum(strName text) long",
           L"GetBomCodeNum(sToParse text, byref ErrInfo text) long",
           L"GetBomCodeNumEx(sDsn text, lItemId long = 0) text",
           L"UpdateBomNumber(sToParse text, FInterID long, BomNumber text, byref EffInfo text) long",
           L"CopyBom(sToParse text, Bom object) long",
           L"GetRoutingData(sToParse text, LongNumber boolean, FInterID long, byref ErrInfo text) object",
           L"UpdateBomRouting(sToParse text, VectInfo object) boolean",
           L"UpdateBomGroup(sToParse text, BomInterId long, BomGroupID long, FOperatorID long) boolean",
           L"UpdateBomGroupName(sToParse text, FInterID long, BomGroupName text) boolean",
       }},
      {L"BomInfo",
       com::TableOf<BomInfo>,
       {
           L"GetBomInfo(sDsn text, sFilter text = '', sOrder text = '', sTableName text = '') object",
           L"GetBomEntryInfo(sDsn text, sFilter text = '', sOrder text = '') object",
           L"GetBomGroupInfo(sDsn text, sFilter text = '', sOrder text = '') object",
           L"GetInfo(sDsn text, byref strSql text) object",
           L"GetItemForbitNumber(sDsn text, BomInterId long) long",
           L"GetBomInfoByItemNumber(sDsn text, sItemNumber text) object",
           L"GetBomInfoByBomNumber(sDsn text, sBomNumber text) object",
           L"GetBomInfoByItemNumber1(sDsn text, sItemNumber text) object",
           L"SelectBomInfoByItemNumber(sDsn text, sItemNumber text) object",
           L"GetBomInfoLikeInfo(sDsn text, sValue text) object",
           L"GetBomInfoByItemID(sDsn text, sItemID text) object",
           L"GetBomList(sDsn text, sParentID text) object",
           L"GetAllBomList(sDsn text, sFilter text) object",
           L"GetChildBomInfoByBomNo(sDsn text, sBomNo text) object",
           L"GetChildBomInfoByItemID(sDsn text, sItemID text) object",
       }},
      {L"BOMImport",
       com::TableOf<BOMImport>,
       {
           L"UpdateBomGroup(sDsn text, byref tDict object) boolean",
           L"UpdateBOM(sDsn text, byref tDict object) boolean",
       }},
      {L"PPorderImort",
       com::TableOf<PPorderImort>,
       {
           L"UpdatePPOrder(sDsn text, byref tDict object) boolean",
       }},
      {L"CEcnInfo",
       com::TableOf<CEcnInfo>,
       {
           L"BeginSave(sDsn text, byref SaveVect object, byref ReturnMsg text) boolean",
           L"EndSave(sDsn text, byref SaveVect object, byref ReturnMsg text) boolean",
           L"CheckECN(sDsn text, lEcnInterID long) long",
           L"GetThenCheckCBomNumber(sDsn text, BomNumber text) boolean",
           L"GetCheckCBomNoChecked(sDsn text, BomInterId long) boolean",
           L"ReturnEcnStatus(sDsn text, EcnInterId long) long",
           L"ReturnEcnStatusByNumber(sDsn text, EcnNumber text) long",
           L"CheckBomUsed(sDsn text, EcnInterId long, BomNumber text, byref strInfo text) long",
           L"CheckEcnBom(sDsn text, FBomInterID long) long",
           L"StarUpEcn(sDsn text, BomInterId long, EcnInterId long, UserID long) boolean",
           L"UnStarUpEcn(sDsn text, EcnInterId long) boolean",
           L"GetEcnBomHead(sDsn text, lBomInterID text) object",
           L"GetEcnBomEntry(sDsn text, lBomInterID text, FilterEntryID text = '') object",
           L"AnalyseBomNumber(sDsn text, SQL text) object",
       }},
      {L"clsMCustBOM",
       com::TableOf<clsMCustBOM>,
       {
           L"UpdateAuditFlag(sDsn text, strCustBomInterID text, b_AuditFlag boolean, strCurCustBomNo text = "
           L"'', byref strMsg text = '') boolean",
           L"GetUsedCustBomNumber(sDsn text, strCustBomInterID text) text",
           L"UpdateDisableStatus(sDsn text, strCustBomInterID text, byref b_Status boolean) text",
           L"CheckCustBOMIsAssisted(sDsn text, s_CustBOMNo text, s_CurCustBOMNo text, byref strMsg text) "
           L"boolean",
           L"GenBomTreeDataSQL(sDsn text, byref sFilter text, byref sFilter1 text, byref sOrder text, byref "
           L"sLookType text) object",
           L"GetTreeViewDataM(sDsn text, sFilter text = '', sFilter1 text = '', sOrder text = '', sLookType "
           L"text = '') object",
           L"GenRightTopDataSQL(sDsn text, sInterID text, sBomType text, sFilter text = '', sFilter1 text = "
           L"'', sOrder text = '') text",
           L"GetRightTopDataM(sDsn text, sInterID text, sBomType text, sFilter text = '', sFilter1 text = "
           L"'', sOrder text = '') object",
           L"GenRightBottomSQL(sDsn text, sBomType text = '', aType long = 0, sFilter text = '', sOrder text "
           L"= '') text",
           L"GetRightBottomDataM(sDsn text, sBomType text = '', aType long = 0, sFilter text = '', sOrder "
           L"text = '') object",
           L"bGetBillNoInfo(sDsn text, byref sPrefixion text, byref sSuffix text, byref sFormat text, byref "
           L"lCurNo long, strLanguage text) boolean",
           L"GetBillNoNew(sDsn text, lBillTransType long, bMoreBill boolean = False, lBillNumber long = 1, "
           L"bUpdate boolean = True, vDict object = Nothing) text",
           L"CopyPasteCustBom(sDsn text, strCustBOMID text, strLanguage text) text",
           L"SetCustBOM(sDsn text, strCustBomCode text, strParentCustBomInterID text, strItemID text) "
           L"boolean",
           L"GetItemFNumber(sDsn text, strItemID text) text",
           L"GetBOMItems() nothing",
           L"GetRecordSet(byref sDsn text, byref s_SQL text) object",
           L"GetRuleByItem(sDsn text, strFItemID text, strFItemGroupID text, strRel text) object",
           L"GetTeZhenSubItems(sDsn text, strTeZhenItemID text) text",
       }},
      {L"clsMBOMRule",
       com::TableOf<clsMBOMRule>,
       {
           L"GetICItemParent(sDsn text, s_ItemID text) object",
           L"GetRecordSet(byref sDsn text, byref s_SQL text) object",
       }},
  };
}

constexpr wchar_t kTransMode[] = L"property TransMode() long";

// The list of a class, sorted, with the property that every class has.
Texts Listed(const PublicClass& publicClass) {
  Texts list(publicClass.methods.begin(), publicClass.methods.end());
  list.emplace_back(kTransMode);
  std::sort(list.begin(), list.end());
  return list;
}

std::wstring TypeName(VARTYPE type) {
  switch (type) {
  case VT_BSTR: return L"text";
  case VT_I4: return L"long";
  case VT_BOOL: return L"boolean";
  case VT_DISPATCH: return L"object";
  case VT_VOID:
  case VT_EMPTY: return L"nothing";
  default: return L"type " + std::to_wstring(type);
  }
}

// What an optional parameter is when it is left out: its default, or else its type's nothing.
std::wstring DefaultText(VARTYPE type, const Variant& value) {
  const bool none = value.IsEmpty() || value.IsMissing();
  switch (type) {
  case VT_BSTR: return L"'" + (none ? std::wstring() : value.AsText()) + L"'";
  case VT_BOOL: return !none && value.AsBool() ? L"True" : L"False";
  case VT_I4: return std::to_wstring(none ? 0 : value.AsLong());
  default: return none || !value.AsObject() ? L"Nothing" : L"an object";
  }
}

std::wstring ParameterText(const std::wstring& name, VARTYPE type, bool inOut, bool optional,
                           const Variant& value) {
  return (inOut ? L"byref " : L"") + name + L" " + TypeName(type) +
         (optional ? L" = " + DefaultText(type, value) : std::wstring());
}

std::wstring MemberText(WORD kind, const std::wstring& name, const Texts& parameters, VARTYPE result) {
  std::wstring text = (kind == DISPATCH_PROPERTYGET ? L"property " : L"") + name + L"(";
  for (size_t i = 0; i < parameters.size(); ++i) text += (i > 0 ? L", " : L"") + parameters[i];
  return text + L") " + TypeName(result);
}

// ---- the type library

std::wstring Described(ITypeInfo& info, const FUNCDESC& function) {
  constexpr UINT kMost = com::Arguments::kMost + 1;
  BSTR names[kMost] = {};
  UINT count = 0;
  com::Check(info.GetNames(function.memid, names, kMost, &count));
  Texts texts;
  for (UINT i = 0; i < count; ++i) texts.push_back(com::TakeBstr(names[i]));
  Texts parameters;
  for (SHORT i = 0; i < function.cParams; ++i) {
    const ELEMDESC& element = function.lprgelemdescParam[i];
    const USHORT flags = element.paramdesc.wParamFlags;
    const bool inOut = element.tdesc.vt == VT_PTR && (flags & PARAMFLAG_FOUT) != 0;
    const Variant value = (flags & PARAMFLAG_FHASDEFAULT) != 0
                              ? Variant(element.paramdesc.pparamdescex->varDefaultValue)
                              : Variant();
    parameters.push_back(ParameterText(texts.at(static_cast<size_t>(i) + 1), PlainType(element.tdesc, inOut),
                                       inOut, (flags & PARAMFLAG_FOPT) != 0, value));
  }
  return MemberText(static_cast<WORD>(function.invkind), texts.at(0), parameters,
                    PlainType(function.elemdescFunc.tdesc, false));
}

class PublicInterface : public testing::TestWithParam<PublicClass> {};

TEST_P(PublicInterface, IsWhatTheTypeLibraryDescribes) {
  Ptr<ITypeLib> library;
  ASSERT_EQ(com::LoadModuleTypeLibrary(BesideTheTest(L"QorvaneMBomBill.dll"), library), S_OK);
  Ptr<ITypeInfo> info;
  ASSERT_EQ(library->GetTypeInfoOfGuid(GetParam().table().interfaceId(), info.Out()), S_OK);
  Texts described;
  FUNCDESC* function = nullptr;
  for (UINT i = 0; info->GetFuncDesc(i, &function) == S_OK; ++i) {
    // The members of IDispatch itself are hidden from clients.
    if ((function->wFuncFlags & FUNCFLAG_FRESTRICTED) == 0)
      described.push_back(Described(*info.Get(), *function));
    info->ReleaseFuncDesc(function);
  }
  std::sort(described.begin(), described.end());
  EXPECT_EQ(described, Listed(GetParam()));
}

TEST_P(PublicInterface, IsWhatLateBoundCallsAreServedBy) {
  Texts served;
  for (const Member& member : GetParam().table().members()) {
    Texts parameters;
    for (const Parameter& parameter : member.parameters)
      parameters.push_back(ParameterText(parameter.name, parameter.type, parameter.inOut, parameter.optional,
                                         parameter.fallback));
    served.push_back(MemberText(member.kind, member.name, parameters, member.result));
  }
  std::sort(served.begin(), served.end());
  EXPECT_EQ(served, Listed(GetParam()));
}

// ---- the objects

// A method of the list taken apart.
struct Signature {
  std::wstring name;
  Texts parameters;
  size_t required = 0;
};

Signature Parse(const std::wstring& method) {
  Signature signature;
  const size_t open = method.find(L'(');
  const size_t close = method.find(L')');
  signature.name = method.substr(0, open);
  for (size_t start = open + 1; start < close;) {
    const size_t end = std::min(method.find(L", ", start), close);
    std::wstring parameter = method.substr(start, end - start);
    if (parameter.find(L" = ") == std::wstring::npos) ++signature.required;
    if (parameter.starts_with(L"byref ")) parameter.erase(0, 6);
    signature.parameters.push_back(parameter.substr(0, parameter.find(L' ')));
    start = end + 2;
  }
  return signature;
}

TEST_P(PublicInterface, IsKnownToItsObjectsByNameInAnyCase) {
  const com::Object object = Unhosted(GetParam().name);
  for (const wchar_t* method : GetParam().methods) {
    const Signature signature = Parse(method);
    SCOPED_TRACE(com::ToUtf8(signature.name));
    Texts names{com::Lower(signature.name)};
    for (const std::wstring& parameter : signature.parameters) names.push_back(com::Lower(parameter));
    std::vector<LPOLESTR> pointers;
    for (std::wstring& name : names) pointers.push_back(name.data());
    std::vector<DISPID> ids(names.size());
    ASSERT_EQ(object.pointer()->GetIDsOfNames(IID_NULL, pointers.data(), static_cast<UINT>(pointers.size()),
                                              LOCALE_INVARIANT, ids.data()),
              S_OK);
    // Parameters are numbered in their order.
    for (size_t i = 1; i < ids.size(); ++i) EXPECT_EQ(ids[i], static_cast<DISPID>(i - 1));
  }
}

TEST_P(PublicInterface, IsCalledWithItsRequiredParametersAndNoMoreThanThereAre) {
  for (const wchar_t* method : GetParam().methods) {
    const Signature signature = Parse(method);
    // An object remembers the names that it was called by, by their address.
    const com::Object object = Unhosted(GetParam().name);
    SCOPED_TRACE(com::ToUtf8(signature.name));
    const auto codeWith = [&](size_t count) {
      std::vector<Variant> arguments(count, Variant(L"0"));
      return RaisedBy([&] { object.CallWith(signature.name.c_str(), arguments); }).code;
    };
    const Trace trace;
    if (signature.required > 0) {
      const HRESULT tooFew = codeWith(signature.required - 1);
      EXPECT_TRUE(tooFew == DISP_E_BADPARAMCOUNT || tooFew == DISP_E_PARAMNOTOPTIONAL) << std::hex << tooFew;
    }
    EXPECT_EQ(codeWith(signature.parameters.size() + 1), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(trace.Events(), Texts{}); // nothing of it ran
    const HRESULT enough = codeWith(signature.required);
    EXPECT_TRUE(enough != DISP_E_BADPARAMCOUNT && enough != DISP_E_PARAMNOTOPTIONAL) << std::hex << enough;
  }
}

INSTANTIATE_TEST_SUITE_P(Classes, PublicInterface, testing::ValuesIn(AllClasses()),
                         [](const auto& instance) { return com::ToUtf8(instance.param.name); });

} // namespace
} // namespace mbom::test
