// What works on this computer, and what to do about the rest, in plain words. Pure; any thread.
//
//   const std::vector<Finding> findings = diagnose(examination, bundle);
//   std::fputs(asText(findings, version).c_str(), stdout);
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/bundle.h"
#include "platform/examination.h"

namespace tollvane {

enum class Health {
  good,
  note,  // works, or does not concern this computer, but the user may want to know
  bad,
};

struct Finding {
  std::string subject;  // "sound", "browser org.mozilla.firefox": the same in all languages and versions
  Health health = Health::good;
  std::string sentence = {};
  std::string mend = {};  // what the user can do; empty: nothing needs to be done

  bool operator==(const Finding&) const = default;
};

// Nothing private is in it: no titles, no names of web sites, and "~" for the user's home.
std::vector<Finding> diagnose(const Examination& examination, const Bundle& bundle);

bool isHealthy(const std::vector<Finding>& findings);

// For people, in lines of at most 100 characters, and for reports of errors.
std::string asText(const std::vector<Finding>& findings, std::string_view version);
std::string asJson(const std::vector<Finding>& findings, std::string_view version);

}  // namespace tollvane
