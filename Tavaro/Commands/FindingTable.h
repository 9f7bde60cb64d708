#pragma once

#include <Tavaro/Model/Privacy/FilmCheck.h>
#include <Tavaro/Model/Privacy/FindingListing.h>

#include <vector>

namespace tavaro::commands {

/// A line each: id, kind, masked value, when the film shows it, and what was decided.
void printFindings(std::vector<ListedFinding> const& findings);
void printLegible(std::vector<LegibleText> const& texts);

}
