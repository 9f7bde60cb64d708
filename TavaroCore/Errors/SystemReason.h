#pragma once

#include <string>

namespace tavaro {

/// What an error number of the operating system says to a user, as the end of a sentence: "the disk is full".
std::string systemReason(int errorNumber);

}
