// Leaves one object behind. When the library unloads, its report goes to the error stream.
#include <cstdio>
#include <string>

#include "corvane/corvane.h"

namespace {

Corvane::DataMapSpec* g_forgotten = nullptr;

void Print(void*, const Corvane::TraceEvent* event) {
  const std::wstring text = event->message;
  std::fprintf(stderr, "%u %s\n", event->level, std::string(text.begin(), text.end()).c_str());
}

}  // namespace

int main() {
  Corvane::DataMapSpec::CreateDataMapSpec()->Dispose();
  g_forgotten = Corvane::DataMapSpec::CreateDataMapSpec();
  g_forgotten->AddRef();
  SetTraceSink(&Print, nullptr, Corvane::kTraceSevere);
  return 0;
}
