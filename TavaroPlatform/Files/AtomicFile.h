#pragma once

#include <TavaroCore/Files/AtomicFile.h>
