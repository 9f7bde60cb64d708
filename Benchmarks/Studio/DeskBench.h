#pragma once

namespace tavaro {

/// What an open project costs the main thread, with everything that follows an edit: a step of a drag in films of three
/// hours and of half an hour; saving an hour's take, and how long an edit takes to the disk.
void benchDesk();

}
