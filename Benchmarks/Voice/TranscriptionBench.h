#pragma once

namespace tavaro {

/// How fast speech becomes words, how much memory that takes here, and how many of them are wrong.
void benchTranscription();

}
