#include "Recorder.h"

#include <fstream>
#include <set>

#include "Processes.h"

namespace VespermoorEngine::Test {

void writeRecorder(const std::string& path, const std::string& record,
                   const std::string& commands) {
    writeScript(path, R"(printf '%s\0' "$0" "$PWD" "$@" >> ')" + record + "'\n" + commands);
}

std::vector<std::string> recorded(const std::string& record) {
    std::ifstream file{record, std::ios::binary};
    std::vector<std::string> all;
    for (std::string text; std::getline(file, text, '\0');) {
        all.push_back(text);
    }
    return all;
}

std::vector<std::string> recordedOptions(const std::string& record) {
    const std::set<std::string> withValue{"--title", "--file-filter",  "--window-icon",
                                          "--text",  "--passivepopup", "--icon"};
    const std::vector<std::string> all = recorded(record);
    std::vector<std::string> options;
    for (std::size_t i = 2; i < all.size(); ++i) {
        if (all[i] == "--") {
            continue;
        }
        options.push_back(all[i]);
        if (withValue.count(all[i]) && i + 1 < all.size()) {
            options.back() += '=' + all[++i];
        }
    }
    return options;
}

} // namespace VespermoorEngine::Test
