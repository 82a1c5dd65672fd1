#include "bench/calls/OneBom.h"

namespace bench {

using com::Object;

std::wstring NoneAbove(int32_t bom) {
  const std::wstring id = std::to_wstring(bom);
  return L"DELETE FROM ICBOMChild WHERE FInterID > " + id + L" DELETE FROM ICBOM WHERE FInterID > " + id +
         L" DELETE FROM ICMaxNum WHERE FTableName = 'ICBOM' INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES "
         L"('ICBOM', " +
         id + L")";
}

std::vector<Call> CallsOfOneBom(int32_t bom, const std::string& suffix, const Aim& aim) {
  const std::wstring id = std::to_wstring(bom);
  const Object source = Object::Create(L"ruvo10.Dictionary");
  source.Put(L"Value", L"FInterID", bom);
  source.Put(L"Value", L"FBOMNumber", L"COPY");
  source.Put(L"Value", L"FParentID", 1);
  source.Put(L"Value", L"FCheckID", 16401);
  source.Put(L"Value", L"FOperatorID", 16401);
  const std::wstring noCopy = NoneAbove(bom);
  return {
      {"GetBomEntryLdgInfo" + suffix,
       L"BomView",
       L"GetBomEntryLdgInfo",
       {0, L"a.FInterID=" + id, L"a.FEntryID"},
       L"",
       1,
       aim},
      {"CopyBom" + suffix, L"CBomFunction", L"CopyBom", {source}, noCopy, 1, aim},
      {"BomCheck" + suffix,
       L"CBomCheck",
       L"BomCheck",
       {bom, L"LARGE", 16402, L""},
       L"UPDATE ICBOM SET FStatus = 0, FCheckerID = NULL WHERE FInterID = " + id,
       20,
       aim},
      {"GetBomDelInfo" + suffix, L"CBomCheck", L"GetBomDelInfo", {bom, L"LARGE", L""}, L"", 20, aim},
      {"CheckBomUsed" + suffix, L"BomUpdate", L"CheckBomUsed", {bom, L""}, L"", 20, aim},
  };
}

} // namespace bench
