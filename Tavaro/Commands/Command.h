#pragma once

namespace CLI {
class App;
}

/// The subcommands of `tavaro`. Each function declares one on the given application; its work runs when the parser
/// has chosen it, and its failures leave as exceptions derived from `tavaro::Error`.
namespace tavaro::commands {

using Declaration = void(CLI::App& app);

// In the order of the help.
#define TAVARO_COMMANDS                                                                                                \
    addRecord, addRecover, addImport, addPolish, addEdit, addFrame, addExport, addCaptions, addTranscribe, addScript,  \
        addVoices, addVoiceover, addInfo, addLibrary, addArchive, addRestore, addPresets, addScan, addRedact,          \
        addScanText, addSources, addSyncCamera, addInput, addUI, addServe, addMCP, addPlay, addCompletion, addManual

Declaration TAVARO_COMMANDS;
inline constexpr Declaration* all[] = {TAVARO_COMMANDS};

#undef TAVARO_COMMANDS

}
