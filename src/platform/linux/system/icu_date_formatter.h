// Dates through ICU, in the language of LC_TIME and the machine's time zone of the moment.
#pragma once

#include "platform/date_formatter.h"

namespace tollvane {

class IcuDateFormatter : public DateFormatter {
 public:
  std::string string(std::string_view pattern, TimePoint time) const override;
};

}  // namespace tollvane
