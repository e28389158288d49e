#pragma once

#include <string>
#include <string_view>

namespace quorvex::view {

/// Returns 128 bits that nobody can guess, as 32 hexadecimal digits. Ends the process if the system
/// gives no random numbers.
std::string newSecret();

/// Whether a text has the form of a secret.
bool hasFormOfSecret(std::string_view text);

}  // namespace quorvex::view
