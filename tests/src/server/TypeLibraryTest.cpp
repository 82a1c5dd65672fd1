// The type library is what clients compile against, the tables are what serves them: they must say the same.
#include <gtest/gtest.h>
#include <objbase.h>
#include <oleauto.h>

#include <map>
#include <set>

#include "com/Module.h"
#include "src/server/Classes.h"
#include "src/server/Tables.h"
#include "tests/src/server/LoadedDll.h"
#include "tests/src/server/TypeDescriptions.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::DispatchTable;
using com::Member;
using com::Parameter;
using com::Ptr;
using com::Variant;

struct ServedClass {
  const wchar_t* name;
  const DispatchTable& (*table)();
};

const ServedClass kClasses[] = {
    {L"BomUpdate", com::TableOf<BomUpdate>},
    {L"BomView", com::TableOf<BomView>},
    {L"BOMImport", com::TableOf<BOMImport>},
    {L"PPorderImort", com::TableOf<PPorderImort>},
    {L"CBomFunction", com::TableOf<CBomFunction>},
    {L"CBomCheck", com::TableOf<CBomCheck>},
    {L"CEcnInfo", com::TableOf<CEcnInfo>},
    {L"BomInfo", com::TableOf<BomInfo>},
    {L"clsMCustBOM", com::TableOf<clsMCustBOM>},
    {L"clsMBOMRule", com::TableOf<clsMBOMRule>},
    {L"clsReadUserDefined", com::TableOf<clsReadUserDefined>},
};

// An owned TYPEATTR or FUNCDESC.
template <class T, HRESULT (__stdcall ITypeInfo::*Get)(T**), void (__stdcall ITypeInfo::*Free)(T*)>
class Description {
 public:
  explicit Description(ITypeInfo& info) : info_(info) { com::Check((info.*Get)(&value_)); }
  ~Description() { (info_.*Free)(value_); }
  Description(const Description&) = delete;
  Description& operator=(const Description&) = delete;
  T* operator->() const { return value_; }

 private:
  ITypeInfo& info_;
  T* value_ = nullptr;
};
using TypeAttributes = Description<TYPEATTR, &ITypeInfo::GetTypeAttr, &ITypeInfo::ReleaseTypeAttr>;

void ExpectSameParameter(const Parameter& parameter, const ELEMDESC& described, const std::wstring& name) {
  SCOPED_TRACE(com::ToUtf8(name));
  EXPECT_TRUE(com::EqualsNoCase(parameter.name, name)) << com::ToUtf8(parameter.name);
  const USHORT flags = described.paramdesc.wParamFlags;
  EXPECT_EQ((flags & PARAMFLAG_FOUT) != 0, parameter.inOut);
  EXPECT_TRUE((flags & PARAMFLAG_FIN) != 0);
  EXPECT_EQ(PlainType(described.tdesc, parameter.inOut), parameter.type);
  EXPECT_EQ((flags & PARAMFLAG_FOPT) != 0, parameter.optional);
  const bool hasDefault = (flags & PARAMFLAG_FHASDEFAULT) != 0;
  EXPECT_EQ(hasDefault, parameter.optional && !parameter.fallback.IsMissing());
  if (hasDefault) {
    EXPECT_EQ(Variant(described.paramdesc.pparamdescex->varDefaultValue), parameter.fallback);
  }
}

void ExpectSameMember(ITypeInfo& info, const FUNCDESC& described, const DispatchTable& table) {
  BSTR names[com::Arguments::kMost + 1] = {};
  UINT count = 0;
  com::Check(info.GetNames(described.memid, names, com::Arguments::kMost + 1, &count));
  std::vector<std::wstring> texts;
  for (UINT i = 0; i < count; ++i) texts.push_back(com::TakeBstr(names[i]));
  SCOPED_TRACE(com::ToUtf8(texts[0]));

  const Member* member = nullptr;
  for (const Member& candidate : table.members())
    if (candidate.id == described.memid && candidate.kind == described.invkind) member = &candidate;
  ASSERT_NE(member, nullptr) << "described, but not served";
  EXPECT_EQ(member->name, texts[0]);
  const VARTYPE result = described.elemdescFunc.tdesc.vt == VT_VOID
                             ? static_cast<VARTYPE>(VT_EMPTY)
                             : PlainType(described.elemdescFunc.tdesc, false);
  EXPECT_EQ(result, member->result);
  ASSERT_EQ(static_cast<size_t>(described.cParams), member->parameters.size());
  ASSERT_EQ(texts.size(), member->parameters.size() + 1);
  for (size_t i = 0; i < member->parameters.size(); ++i)
    ExpectSameParameter(member->parameters[i], described.lprgelemdescParam[i], texts[i + 1]);
}

class TypeLibraryTest : public testing::TestWithParam<ServedClass> {
 protected:
  void SetUp() override {
    ASSERT_EQ(com::LoadModuleTypeLibrary(BesideTheTest(L"QorvaneMBomBill.dll"), library_), S_OK);
  }
  Ptr<ITypeLib> library_;
};

TEST_P(TypeLibraryTest, AgreesWithTheTable) {
  const DispatchTable& table = GetParam().table();
  Ptr<ITypeInfo> info;
  ASSERT_EQ(library_->GetTypeInfoOfGuid(table.interfaceId(), info.Out()), S_OK);
  const TypeAttributes attributes(*info.Get());
  EXPECT_EQ(attributes->typekind, TKIND_DISPATCH);

  std::set<MEMBERID> own;
  for (const Member& member : table.members()) own.insert(member.id);
  std::set<MEMBERID> described;
  for (UINT i = 0; i < attributes->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    ASSERT_EQ(info->GetFuncDesc(i, &function), S_OK);
    if ((function->wFuncFlags & FUNCFLAG_FRESTRICTED) == 0) {
      described.insert(function->memid);
      ExpectSameMember(*info.Get(), *function, table);
    }
    info->ReleaseFuncDesc(function);
  }
  EXPECT_EQ(described, own);
}

TEST_P(TypeLibraryTest, SaysWhatEachMemberDoes) {
  const DispatchTable& table = GetParam().table();
  Ptr<ITypeInfo> info;
  ASSERT_EQ(library_->GetTypeInfoOfGuid(table.interfaceId(), info.Out()), S_OK);
  for (const Member& member : table.members()) {
    BSTR help = nullptr;
    ASSERT_EQ(info->GetDocumentation(member.id, nullptr, &help, nullptr, nullptr), S_OK);
    const std::wstring text = com::TakeBstr(help);
    EXPECT_TRUE(text.ends_with(L".")) << com::ToUtf8(member.name) << ": " << com::ToUtf8(text);
  }
}

TEST(TypeLibrary, SaysWhatAnOmittedCustomerBomNumberIs) {
  Ptr<ITypeLib> library;
  ASSERT_EQ(com::LoadModuleTypeLibrary(BesideTheTest(L"QorvaneMBomBill.dll"), library), S_OK);
  Ptr<ITypeInfo> info;
  ASSERT_EQ(library->GetTypeInfoOfGuid(com::TableOf<clsMCustBOM>().interfaceId(), info.Out()), S_OK);
  constexpr MEMBERID kUpdateAuditFlag = 2;
  const TypeAttributes attributes(*info.Get());
  bool found = false;
  for (UINT i = 0; i < attributes->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    ASSERT_EQ(info->GetFuncDesc(i, &function), S_OK);
    if (function->memid == kUpdateAuditFlag) {
      found = true;
      const PARAMDESC& number = function->lprgelemdescParam[3].paramdesc;
      EXPECT_NE(number.wParamFlags & PARAMFLAG_FHASDEFAULT, 0);
      EXPECT_EQ(Variant(number.pparamdescex->varDefaultValue), Variant(L""));
    }
    info->ReleaseFuncDesc(function);
  }
  EXPECT_TRUE(found);
}

TEST_P(TypeLibraryTest, DescribesTheCoclassUnderTheRegisteredClassId) {
  const std::wstring progId = std::wstring(L"QorvaneMBomBill.") + GetParam().name;
  const com::ClassEntry* entry = nullptr;
  for (const com::ClassEntry& candidate : PublicClasses())
    if (progId == candidate.progId) entry = &candidate;
  ASSERT_NE(entry, nullptr);
  Ptr<ITypeInfo> coclass;
  ASSERT_EQ(library_->GetTypeInfoOfGuid(entry->classId, coclass.Out()), S_OK);
  const TypeAttributes attributes(*coclass.Get());
  EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
  ASSERT_EQ(attributes->cImplTypes, 1);
  HREFTYPE reference = 0;
  Ptr<ITypeInfo> defaultInterface;
  ASSERT_EQ(coclass->GetRefTypeOfImplType(0, &reference), S_OK);
  ASSERT_EQ(coclass->GetRefTypeInfo(reference, defaultInterface.Out()), S_OK);
  EXPECT_EQ(TypeAttributes(*defaultInterface.Get())->guid, GetParam().table().interfaceId());
  BSTR name = nullptr;
  ASSERT_EQ(coclass->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(com::TakeBstr(name), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Classes, TypeLibraryTest, testing::ValuesIn(kClasses),
                         [](const auto& instance) { return com::ToUtf8(instance.param.name); });

TEST(PublicClasses, AreElevenWithDistinctIds) {
  std::set<std::wstring> progIds;
  std::set<std::wstring> classIds;
  for (const com::ClassEntry& entry : PublicClasses()) {
    wchar_t text[40];
    StringFromGUID2(entry.classId, text, 40);
    classIds.insert(text);
    progIds.insert(entry.progId);
  }
  EXPECT_EQ(progIds.size(), 11u);
  EXPECT_EQ(classIds.size(), 11u);
}

} // namespace
} // namespace mbom::test
