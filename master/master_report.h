// What the programs of this folder tell on standard output, line by line, and how they end.
#pragma once

#include <string>

#include "master/publisher.h"

namespace wavo::master {

/// "viewer" and the number of its window.
std::string ViewerName(const ViewerState& viewer);

/// A line about a viewer.
void PrintEvent(const ViewerState& viewer, const char* what);

/// The line with the sums of a viewer, or of all together.
void PrintCounters(const char* who, const Counters& counters);

/// Tells of every event. A program may put its own in the place of some.
PublisherEvents PrintedEvents();

/// The first line of a master: it publishes now.
void PrintStart(const char* program, const MasterPublisher& publisher);

/// Waits until the viewers have taken what is published, ends the link and tells the sums. A
/// request to end the program, also one that came before, shortens the wait. The publisher stays,
/// ended.
void EndInOrder(MasterPublisher* publisher);

}  // namespace wavo::master
