#pragma once

namespace tavaro {

/// `tavaro-studio` as it is started, on a virtual display, with 500 projects in its library: until its first frame and
/// until it answers, what it draws at rest, and its memory. Nothing where there is no Xvfb.
void benchProgram();

}
