#pragma once

/// Calls of operator new in this test program so far, on all threads.
long allocationCount();
