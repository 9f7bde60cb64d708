#pragma once

#include "../Core/Editing/RandomDocument.h"

namespace tavaro {

/// One edit of a kind that people and agents make, of any part that has items: cuts, splits, repeated clips, items
/// added, dropped, changed, moved, put in another order, lists written anew.
void editAtRandom(DemoProject& project, RandomDocument& random);

/// A document whose every list has items.
DemoProject fullDocument(RandomDocument& random);

}
