// Reads three named values of a recorded device.
//   read_values FOLDER SPECIFICATION
#include <filesystem>
#include <iostream>

#include "corvane/corvane.h"
#include "host/recorded/recorded_address.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::wstring specification = std::filesystem::path(argv[2]).wstring();
  Corvane::Address* const device = Corvane::Host::CreateRecordedAddress(argv[1]);
  Corvane::DataCollection* values = nullptr;
  if (CreateDataCollectionFromFile(device, specification.c_str(), &values, nullptr) == S_OK) {
    for (const wchar_t* name : {L"Model", L"Status", L"Family"}) {
      _variant_t value;
      if (values->GetValue(name, &value) != S_OK) continue;
      const _bstr_t text(value);
      std::wcout << name << L" = " << std::wstring_view(text, text.length()) << L'\n';
    }
    values->Release();
  }
  if (device) device->Release();
}
