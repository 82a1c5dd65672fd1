#include "standin/server/Classes.h"

#include <array>

#include "standin/ado/Command.h"
#include "standin/ado/Connection.h"
#include "standin/ado/Recordset.h"
#include "standin/foundation/Dictionary.h"
#include "standin/foundation/FoundationGlobal.h"
#include "standin/foundation/Vector.h"
#include "standin/host/Faults.h"
#include "standin/host/Host.h"
#include "standin/host/Trace.h"
#include "standin/platform/BillCodeRule.h"
#include "standin/platform/BillPackage.h"
#include "standin/platform/GlobalObject.h"
#include "standin/platform/Loader.h"
#include "standin/platform/Log.h"
#include "standin/platform/ObjectFactory.h"
#include "standin/platform/SecurityInfo.h"
#include "standin/platform/SystemProfile.h"

namespace standin {
namespace {

// Fixed for good: clients' registries hold them.
constexpr CLSID kDictionary = {0x4a49e1f7, 0x1fa2, 0x4813, {0x8b, 0x69, 0x59, 0x14, 0xa6, 0xc5, 0x42, 0xa4}};
constexpr CLSID kVector = {0xfaf68cb1, 0xdc6a, 0x45a4, {0x88, 0x39, 0xe0, 0x66, 0x06, 0x47, 0x2e, 0x86}};
constexpr CLSID kFoundationGlobal = {
    0xb3a499a7, 0x4831, 0x495b, {0x93, 0xdf, 0xeb, 0xb7, 0xf2, 0x37, 0xed, 0x60}};
constexpr CLSID kLoader = {0xf4c3d8fb, 0x2b32, 0x4e8b, {0x89, 0x5d, 0xc4, 0x05, 0x3f, 0x7e, 0xa0, 0xf1}};
constexpr CLSID kGlobalObject = {
    0x8b7712c1, 0xc59c, 0x45e9, {0xbc, 0xec, 0x5e, 0xf7, 0x85, 0x0d, 0x92, 0x3b}};
constexpr CLSID kObjectFactory = {
    0x1aca0119, 0x3101, 0x46f7, {0x8f, 0x50, 0x92, 0x90, 0xf4, 0xec, 0xc5, 0x50}};
constexpr CLSID kSecurityInfo = {
    0x15cc364e, 0x1116, 0x4142, {0xa2, 0xcc, 0x38, 0xd5, 0x17, 0xcb, 0x60, 0x75}};
constexpr CLSID kSystemProfile = {
    0x1ca269c5, 0x99a8, 0x4366, {0xbd, 0x6f, 0xda, 0x07, 0x9e, 0x9f, 0xf3, 0x5c}};
constexpr CLSID kBillCodeRule = {
    0xc55f47e0, 0x8f0c, 0x4a37, {0x9d, 0x0e, 0x35, 0x6a, 0xd1, 0x2f, 0x91, 0x58}};
constexpr CLSID kLog = {0x7d85bc00, 0x944d, 0x41e0, {0x84, 0x66, 0xe4, 0x0d, 0x47, 0x70, 0x7d, 0x0d}};
constexpr CLSID kBillPackage = {0xde206745, 0x15e2, 0x480f, {0x8e, 0x41, 0xe0, 0xb5, 0x8b, 0x02, 0x0d, 0x92}};
constexpr CLSID kHost = {0xd2a66735, 0xc65a, 0x4bea, {0x9b, 0xbf, 0x88, 0x7b, 0x49, 0x9a, 0x58, 0x35}};
constexpr CLSID kTrace = {0xdf7bb2a4, 0x37eb, 0x4088, {0xab, 0x1d, 0xb4, 0x8c, 0x6a, 0x6b, 0xcb, 0x16}};
constexpr CLSID kFaults = {0x1062649d, 0xaa6d, 0x4dde, {0xa3, 0xe7, 0x9a, 0x30, 0x39, 0x48, 0xfe, 0x1c}};
constexpr CLSID kConnection = {0xd4abfdb0, 0x5788, 0x4844, {0x8f, 0x2c, 0x82, 0xce, 0x0b, 0x8c, 0x56, 0x82}};
constexpr CLSID kRecordset = {0xddf4c581, 0xf4dd, 0x4c8f, {0xb9, 0x4e, 0xfe, 0xc9, 0x62, 0xcd, 0x26, 0x3f}};
constexpr CLSID kCommand = {0x9a3b5819, 0xb57d, 0x41a7, {0xa6, 0x28, 0xdb, 0xc8, 0x29, 0x41, 0xc8, 0xde}};
constexpr CLSID kParameter = {0x249450f1, 0x7c89, 0x4793, {0xaa, 0x07, 0x43, 0x29, 0x03, 0x68, 0x47, 0x8e}};

constexpr size_t kAdoClasses = 4; // the first of the list

// There is no type library, so the objects do not know their class.
template <class T>
com::ClassEntry Entry(REFCLSID classId, const wchar_t* progId, const wchar_t* description) {
  return {classId, progId, description,
          [](REFCLSID /*classId*/) { return com::Ptr<IDispatch>(com::Make<T>().Get()); }};
}

} // namespace

std::span<const com::ClassEntry> Classes() {
  static const std::array classes{
      Entry<ado::Connection>(kConnection, L"ADODB.Connection", L"ADO connection to the embedded engine"),
      Entry<ado::Recordset>(kRecordset, L"ADODB.Recordset", L"ADO recordset of the embedded engine"),
      Entry<ado::Command>(kCommand, L"ADODB.Command", L"ADO command for the embedded engine"),
      Entry<ado::Parameter>(kParameter, L"ADODB.Parameter", L"ADO parameter for the embedded engine"),
      Entry<Dictionary>(kDictionary, L"ruvo10.Dictionary", L"Values by name"),
      Entry<Vector>(kVector, L"ruvo10.Vector", L"List of values"),
      Entry<FoundationGlobal>(kFoundationGlobal, L"ruvo10.Global", L"Foundation library functions"),
      Entry<Loader>(kLoader, L"TarnelResLoader.Loader", L"Translations of resource texts"),
      Entry<GlobalObject>(kGlobalObject, L"QorvaneGlobal.Global", L"Data-access contexts"),
      Entry<ObjectFactory>(kObjectFactory, L"QorvaneWoskBase.ObjectFactory", L"Creation of server objects"),
      Entry<SecurityInfo>(kSecurityInfo, L"QorvaneWoskBase.SecurityInfo", L"The current user"),
      Entry<SystemProfile>(kSystemProfile, L"QorvaneWoskBase.SystemProfile", L"System settings"),
      Entry<BillCodeRule>(kBillCodeRule, L"QorvaneMBillCodeRule.clsBillCodeRule", L"Bill numbers by rules"),
      Entry<BillPackage>(kBillPackage, L"QorvaneBillDataAccess.clsBillPackage", L"A bill with its template"),
      Entry<Log>(kLog, L"VexoLogMsg.Log", L"Procedure log"),
      Entry<Host>(kHost, L"ErpStandIn.Host", L"Transactional component host"),
      Entry<Trace>(kTrace, L"ErpStandIn.Trace", L"What the component asks of the outside"),
      Entry<Faults>(kFaults, L"ErpStandIn.Faults", L"Failures of the outside, for tests"),
  };
  return classes;
}

std::span<const com::ClassEntry> ClassesBesidesAdo() {
  return Classes().subspan(kAdoClasses);
}

} // namespace standin
