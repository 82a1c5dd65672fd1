// ADO's constants that the component hands over or meets, named as there: ad::kUseClient is adUseClient.
#pragma once

#include <cstdint>

namespace mbom::ad {

// Says that an argument is left to ADO.
inline constexpr int32_t kUnspecified = -1;

// Where the cursor is (CursorLocation) and whether an object is open (State).
inline constexpr int32_t kUseClient = 3;
inline constexpr int32_t kStateClosed = 0;

// What a command's text is (CommandType).
inline constexpr int32_t kCmdText = 1;
inline constexpr int32_t kCmdStoredProc = 4;

// A parameter's direction and type.
inline constexpr int32_t kParamInput = 1;
inline constexpr int32_t kParamOutput = 2;
inline constexpr int32_t kParamReturnValue = 4;
inline constexpr int32_t kInteger = 3;
inline constexpr int32_t kVarChar = 200;
inline constexpr int32_t kVarWChar = 202;

} // namespace mbom::ad
