#ifndef Vespermoor_Host_Commands_h
#define Vespermoor_Host_Commands_h

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `json`, which prints a document or a value in it, and writes values into it. */
void addJsonCommand(CLI::App& program);

/** @brief Adds `render`, which renders a template against JSON documents. */
void addRenderCommand(CLI::App& program);

/** @brief Adds `generate`, which keeps the generated files of a manifest current. */
void addGenerateCommand(CLI::App& program);

/** @brief Adds `tags`, which replaces tagged regions of a file. */
void addTagsCommand(CLI::App& program);

/** @brief Adds `case`, which converts identifiers between naming styles. */
void addCaseCommand(CLI::App& program);

/** @brief Adds `search`, which finds a text in files without regard to case. */
void addSearchCommand(CLI::App& program);

/** @brief Adds `root`, which prints the directories of the executables and of the editor's data. */
void addRootCommand(CLI::App& program);

/** @brief Adds `watch`, which prints or acts on changes of files and directory trees. */
void addWatchCommand(CLI::App& program);

/**
 * @brief Makes the words from `--exec` of `watch` to the semicolon one word.
 *
 * CLI11 would take the program's options for options of `watch`. The words are joined to `--exec=`
 * with a NUL after each. Throws `CLI::ValidationError` if the program or the semicolon is missing.
 */
void joinExecCommand(std::vector<std::string>& words);

} // namespace VespermoorEngine::Host

#endif
