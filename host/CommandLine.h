#ifndef Vespermoor_Host_CommandLine_h
#define Vespermoor_Host_CommandLine_h

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `--output FILE`, which refuses an empty name, and stores it in @p path. */
void addOutputOption(CLI::App& command, std::string& path);

/** @brief Throws `CLI::ValidationError` if more than one of the inputs @p paths is `-`. */
void expectOneStandardInput(const std::vector<std::string>& paths);

} // namespace VespermoorEngine::Host

#endif
