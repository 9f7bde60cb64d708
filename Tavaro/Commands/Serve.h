#pragma once

#include <Tavaro/Commands/Command.h>

namespace tavaro::commands {

/// The application without windows.
Declaration addServe;

}
