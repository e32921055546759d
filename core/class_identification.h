// The type name that every object of the library reports in traces.
#ifndef CORVANE_CORE_CLASS_IDENTIFICATION_H_
#define CORVANE_CORE_CLASS_IDENTIFICATION_H_

namespace Corvane {

inline constexpr char kClassIdentification[] =
    "<GetTypeName(): class identification disabled, refer to IDisposableImpl>";

}  // namespace Corvane

#endif  // CORVANE_CORE_CLASS_IDENTIFICATION_H_
