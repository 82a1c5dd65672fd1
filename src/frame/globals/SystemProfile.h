// One setting of the system, from the table t_SystemProfile.
#pragma once

#include <string>

#include "com/Variant.h"
#include "src/frame/Frame.h"

namespace mbom {

// FValue of the setting `key` of `category` in t_SystemProfile, as it comes; `fallback` when there is no such
// setting. Failures throw.
com::Variant ReadSystemProfile(const Frame& frame, const std::wstring& key, const std::wstring& category,
                               const com::Variant& fallback = com::Variant(L""));

} // namespace mbom
