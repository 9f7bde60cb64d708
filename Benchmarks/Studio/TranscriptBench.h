#pragma once

namespace tavaro {

/// What the transcript's page costs the main thread in films of three hours and of half an hour, without drawing it: to
/// be opened, to delete a word with all that follows from it, to show a page of paragraphs, to follow the playhead.
void benchTranscript();

}
