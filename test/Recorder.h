#ifndef Vespermoor_Test_Recorder_h
#define Vespermoor_Test_Recorder_h

#include <string>
#include <vector>

namespace VespermoorEngine::Test {

/**
 * @brief Makes @p path a program that adds to the file @p record how it was run.
 *
 * That is its path, its current directory and its arguments, each with a zero byte behind it. Then
 * it does what the shell's @p commands say.
 */
void writeRecorder(const std::string& path, const std::string& record,
                   const std::string& commands = {});

/** @brief What the program has added to @p record so far; nothing where it never ran. */
std::vector<std::string> recorded(const std::string& record);

/**
 * @brief Arguments that a helper of dialogs was run with, of which @p record tells.
 *
 * An option and its value are one here, with a `=` in between, and a `--` that ends the options is
 * left out: those are up to the header that runs the helper.
 */
std::vector<std::string> recordedOptions(const std::string& record);

} // namespace VespermoorEngine::Test

#endif
