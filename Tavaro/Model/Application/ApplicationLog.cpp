#include <Tavaro/Model/Application/ApplicationLog.h>

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <cstddef>
#include <memory>

namespace tavaro {

void logInto(std::filesystem::path const& folder) {
    constexpr std::size_t mostBytes = 1 << 20, oldFiles = 3;
    try {
        std::filesystem::create_directories(folder);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
        auto const file = (folder / "tavaro.log").string();
        spdlog::default_logger()->sinks().push_back(
            std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file, mostBytes, oldFiles));
        spdlog::flush_on(spdlog::level::info);
    } catch (std::exception const& error) {
        spdlog::warn("Nothing is logged into “{}”: {}", folder.string(), error.what());
    }
}

}
