#pragma once

#include <map>
#include <string>
#include <utility>

#include "foundation/export.h"

namespace orvane {

/// Keys of an error's user info.
inline constexpr const char* NSLocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr const char* NSLocalizedFailureReasonErrorKey = "NSLocalizedFailureReason";

/// What went wrong: a domain that owns the code, the code, and texts for people under the keys above. A
/// default constructed error stands for "no error".
class ORVANE_EXPORT Error {
  public:
    using UserInfo = std::map<std::string, std::string>;

    Error() = default;
    Error(std::string domain, int code, UserInfo userInfo)
        : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}
    Error(std::string domain, int code, std::string description)
        : Error(std::move(domain), code, UserInfo{{NSLocalizedDescriptionKey, std::move(description)}}) {}

    explicit operator bool() const { return !domain_.empty(); }

    const std::string& domain() const { return domain_; }
    int code() const { return code_; }
    const UserInfo& userInfo() const { return userInfo_; }

    /// The text for people; domain and code when the user info holds none.
    std::string localizedDescription() const;
    /// Why it went wrong; empty when nothing was said.
    std::string localizedFailureReason() const;

  private:
    std::string domain_;
    int code_ = 0;
    UserInfo userInfo_;
};

/// Stores `value` where the caller asked for it; callers that do not care pass none.
inline void assignError(Error* destination, Error value) {
    if (destination) *destination = std::move(value);
}

}  // namespace orvane
