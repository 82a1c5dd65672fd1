// Diagnostics: where the reasons of failures go that a method traps. Its caller sees only the failure value.
#pragma once

#include <exception>

namespace mbom {

// Called with each trapped failure on the thread that it happened on. It must not throw.
using DiagnosticSink = void (*)(const std::exception& failure);

// Sets the sink of the process; null, as at the start, drops everything. Returns the one that was set before.
DiagnosticSink SetDiagnosticSink(DiagnosticSink sink) noexcept;

// Hands a trapped failure to the sink, and to the diagnostic log.
void ReportTrapped(const std::exception& failure) noexcept;

} // namespace mbom
