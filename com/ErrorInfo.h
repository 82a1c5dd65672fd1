// ErrorInfo: an error object for texts that hold NULs.
//
// The system's own (CreateErrorInfo) takes its texts up to the first NUL. This one has the whole of them. As
// long as it is a thread's error object the module stays loaded, so it serves only where the system's cannot.
#pragma once

#include <oaidl.h>

#include <string>

#include "com/Ptr.h"

namespace com {

class ComError;

// Throws std::bad_alloc.
Ptr<IErrorInfo> MakeErrorInfo(const ComError& error);

} // namespace com
