#include "src/frame/Diagnostics.h"

#include <atomic>

#include "src/log/DiagnosticLog.h"

namespace mbom {
namespace {

std::atomic<DiagnosticSink> g_sink{nullptr};

} // namespace

DiagnosticSink SetDiagnosticSink(DiagnosticSink sink) noexcept {
  return g_sink.exchange(sink);
}

void ReportTrapped(const std::exception& failure) noexcept {
  if (const DiagnosticSink sink = g_sink.load()) sink(failure);
  LogTrapped(failure);
}

} // namespace mbom
