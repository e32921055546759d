// The attributes that the system knows, by name.
#ifndef CORVANE_IPP_ATTRIBUTE_TABLE_H_
#define CORVANE_IPP_ATTRIBUTE_TABLE_H_

#include <array>

namespace Corvane {

enum IPPValueKind : int {
  kIPPTextValue = 0,
  kIPPNumberValue = 1,  // integer or enum
  kIPPBooleanValue = 2,
  kIPPRangeValue = 3,
  kIPPResolutionValue = 4,
  kIPPDateTimeValue = 5,
};

struct IPPAttributeRow {
  const char* name;
  int valueTag;
  int valueKind;  // an IPPValueKind
};

// The order is fixed. The table departs from the IANA registry where devices in the field do:
// "sides" and "job-sheets" in all their forms are integers, and "job-media-sheet" has no final s.
extern const std::array<IPPAttributeRow, 110> kIPPAttributeTable;

}  // namespace Corvane

#endif  // CORVANE_IPP_ATTRIBUTE_TABLE_H_
