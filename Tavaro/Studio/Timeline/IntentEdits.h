#pragma once

#include <Tavaro/Studio/Timeline/TimelineIntent.h>

namespace tavaro {

struct DemoProject;

/// Makes the edit that an intent asks for, as far as the document's limits allow; an intent that is no edit, or names
/// what is not there, changes nothing. A moved caption takes its words along, a shorter zoom scales its ramps to fit, a
/// trimmed clip moves what follows.
void carryOut(TimelineIntent const& intent, DemoProject& project);

}
