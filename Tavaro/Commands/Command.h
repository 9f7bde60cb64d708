#pragma once

namespace CLI {
class App;
}

/// The subcommands of `tavaro`. Each function declares one on the given application; its work runs when the parser
/// has chosen it, and its failures leave as exceptions derived from `tavaro::Error`.
namespace tavaro::commands {

void addRecord(CLI::App& app);
void addRecover(CLI::App& app);
void addImport(CLI::App& app);
void addPolish(CLI::App& app);
void addEdit(CLI::App& app);
void addFrame(CLI::App& app);
void addExport(CLI::App& app);
void addCaptions(CLI::App& app);
void addInfo(CLI::App& app);
void addLibrary(CLI::App& app);
void addArchive(CLI::App& app);
void addRestore(CLI::App& app);
void addPresets(CLI::App& app);
void addScanText(CLI::App& app);
void addSources(CLI::App& app);

}
