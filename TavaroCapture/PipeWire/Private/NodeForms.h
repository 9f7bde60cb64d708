#pragma once

#include <TavaroCapture/Camera/Private/CameraMode.h>
#include <TavaroCapture/PipeWire/Private/Connection.h>

#include <vector>

namespace tavaro::pipewire {

/// The forms in which a node gives pictures, of those that can be read here.
std::vector<CameraMode> modesOf(Connection& connection, Node const& node);

}
