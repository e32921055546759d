// Encoding whatever a caller asks for: the bytes are an operation and a position, then settings,
// attributes and blobs, each behind a byte that says which. Nothing is written beside the buffer,
// and what was made without blobs, of tags that values have, can be read back.
#include "corvane/handles.h"
#include "fuzz/input.h"
#include "tests/support/request_settings.h"

namespace {

using namespace Corvane;
using namespace Corvane::Test;
using Fuzz::Expect;

template <typename Settings>
const auto& Nth(const Settings& settings, unsigned number) {
  return settings[number % std::size(settings)];
}

// False for what need not be well formed.
bool ApplyNext(Fuzz::Input* input, IPPOperations* operations, IPPRequestBase* request) {
  const unsigned which = input->Next<std::uint8_t>();
  switch (which % 5) {
    case 0:
      (operations->*Nth(kExchangeSettings, which / 5).set)(input->Text().c_str());
      return true;
    case 1:
      (request->*Nth(kTextSettings, which / 5).set)(input->Text().c_str());
      return true;
    case 2:
      (request->*Nth(kNumberSettings, which / 5).set)(input->Next<std::int32_t>());
      request->SetIPPAttributeFidelity(which > 127);
      request->SetLastDocument(which > 127);
      return true;
    case 3: {
      const std::string blob = input->Text();
      request->AddIPPRequest(which / 5 % 3, blob.data(), static_cast<std::int32_t>(blob.size()));
      return blob.empty();
    }
    default: {
      IPPAttributeStruct attribute;
      std::memset(&attribute, input->Next<std::uint8_t>(), sizeof(attribute));
      attribute.group = which / 5 % 3;
      attribute.valueTag = input->Next<std::int16_t>();
      input->Read(attribute.name, input->Next<std::uint8_t>() % (sizeof(attribute.name) + 1));
      input->Read(&attribute.value, input->Next<std::uint16_t>() % (sizeof(attribute.value) + 1));
      request->AddIPPRequest(attribute);
      return (attribute.valueTag & 0xFF) >= 0x10;
    }
  }
}

// The body between two guards.
class Form {
 public:
  explicit Form(char guard) : m_guard(guard), m_bytes(2 * kGuard + kIPPRequestSize, guard) {}
  char* Body() { return m_bytes.data() + kGuard; }
  bool IsWhole() const {
    const std::string guard(kGuard, m_guard);
    return m_bytes.starts_with(guard) && m_bytes.ends_with(guard);
  }

 private:
  static constexpr std::size_t kGuard = 64;
  const char m_guard;
  std::string m_bytes;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::Input input(data, size);
  const int operation = input.Next<std::uint8_t>();
  int position = input.Next<std::int16_t>();
  IPPOperations operations(nullptr);
  const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  bool isReadable = true;
  while (!input.IsOver()) isReadable &= ApplyNext(&input, &operations, request.Get());

  Form form('\xA5');
  int length = -1;
  const HRESULT result =
      operations.FormIPPRequestBasedOnOperation(form.Body(), operation, &length, request.Get());
  Form again('\x5A');
  int sameLength = -1;
  Expect(result == operations.FormIPPRequestBasedOnOperation(again.Body(), operation, &sameLength,
                                                             request.Get()));
  Expect(length == sameLength && std::memcmp(form.Body(), again.Body(), kIPPRequestSize) == 0);
  Expect(length == -1 ? result == E_FAIL : length > 9 && length <= kIPPRequestSize);
  if (length > 0) Expect(form.Body()[length - 1] == 3 || length == kIPPRequestSize);
  if (length > 0 && isReadable) {
    IPPOperations reader(nullptr);
    const auto* const body = reinterpret_cast<const unsigned char*>(form.Body());
    _variant_t charset;
    Expect(reader.ParseIPPContent(body, length, nullptr) == S_OK &&
           reader.GetValueFromIPPMap("attributes-charset", &charset));
  }

  const std::string text = Fuzz::Input(data, size).Text();
  char* const body = form.Body();
  IPPOperations::AddResolutionToIPPRequest(body, "r", 3, operation, operation, &position);
  IPPOperations::AddStringsToIPPRequest(body, operation, text.c_str(), text.c_str(), &position);
  IPPOperations::AddStringToIPPRequest(body, operation, "s", text.c_str(), &position);
  IPPOperations::AddBooleanToIPPRequest(body, "b", 1, &position);
  Expect(form.IsWhole() && again.IsWhole());
  return 0;
}
