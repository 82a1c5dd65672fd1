#include "standin/platform/DataSource.h"

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "com/Text.h"
#include "standin/ado/Connection.h"
#include "standin/host/UnitOfWork.h"

namespace standin {

using com::Object;

std::wstring DataSource::UserId() const {
  const std::wstring id = descriptor_.Get(L"User ID");
  return id.empty() ? L"0" : id;
}

// The same text for all descriptors of one data source: the descriptor without the keys that do not change
// it.
std::wstring DataSource::Identity() const {
  switch (descriptor_.server()) {
  case ado::Server::Embedded: return L"Embedded;" + com::Lower(descriptor_.Get(L"Data Source"));
  case ado::Server::Odbc: return L"ODBC;" + descriptor_.Get(L"Connection");
  case ado::Server::Unknown: break;
  }
  return descriptor_.Without({L"Language", L"SubID", L"Now"});
}

Object DataSource::Open() const {
  if (descriptor_.server() == ado::Server::Unknown) {
    Object connection = Object::Create(L"ADODB.Connection");
    connection.Call(L"Open", Identity());
    return connection;
  }
  const auto connection = com::Make<ado::Connection>();
  connection->object().OpenOn(descriptor_);
  return com::ToObject(connection);
}

Object DataSource::Connect() const {
  if (descriptor_.Get(L"Provider").empty() && descriptor_.Get(L"Data Source").empty())
    throw com::ComError(E_INVALIDARG, L"QorvaneGlobal",
                        L"The connection descriptor names neither a provider nor a data source.");
  UnitOfWork* unit = UnitOfWork::Current();
  if (!unit) return Open();
  bool isNew = false;
  Object connection = unit->Enlist(Identity(), [&] {
    isNew = true;
    return Open();
  });
  // The unit may have its connection from a descriptor with another clock.
  if (auto* own = isNew ? nullptr : com::Unwrap<ado::Connection>(connection.pointer()))
    own->session()->SetClock(descriptor_);
  return connection;
}

} // namespace standin
