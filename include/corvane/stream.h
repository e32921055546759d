// A byte stream of the host's.
#ifndef CORVANE_STREAM_H_
#define CORVANE_STREAM_H_

#include <cstdint>

#include "corvane/disposable.h"

namespace Corvane {

// Declared for hosts that pass document data among their own parts; the library calls none of it.
// Sizes are bytes.
class CORVANE_API Stream : public virtual Corvane::IDisposable {
 public:
  Stream();
  Stream(const Stream& other);
  Stream& operator=(const Stream& other);

  virtual HRESULT Open() = 0;
  virtual HRESULT Close() = 0;
  virtual bool IsOpen() = 0;
  virtual HRESULT Read(void* data, std::uint32_t size, std::uint32_t* read) = 0;
  virtual HRESULT Write(const void* data, std::uint32_t size, std::uint32_t* written) = 0;
  virtual HRESULT Flush() = 0;
  virtual HRESULT Seek(std::uint64_t position) = 0;
  virtual HRESULT GetPosition(std::uint64_t* position) = 0;
  virtual HRESULT GetSize(std::uint64_t* size) = 0;
  virtual HRESULT SetSize(std::uint64_t size) = 0;
  virtual bool IsAtEnd() = 0;
  virtual HRESULT CopyTo(Stream* target, std::uint64_t size) = 0;
  virtual std::uint32_t GetLastError() = 0;

  virtual ~Stream();
};

}  // namespace Corvane

#endif  // CORVANE_STREAM_H_
