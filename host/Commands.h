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

/** @brief Adds `root`, which prints where the executables and the editor's data are. */
void addRootCommand(CLI::App& program);

/** @brief Adds `watch`, which prints or acts on changes below directories and of files. */
void addWatchCommand(CLI::App& program);

/**
 * @brief Makes the words from `--exec` of `watch` to the semicolon one word.
 *
 * CLI11 would take options of the program that is to be run for options of `watch`. The words are
 * joined to `--exec=` with a NUL after each. Throws `CLI::ValidationError` if the program or the
 * semicolon is missing.
 */
void joinExecCommand(std::vector<std::string>& words);

} // namespace VespermoorEngine::Host

#endif
