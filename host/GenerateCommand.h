#ifndef Vespermoor_Host_GenerateCommand_h
#define Vespermoor_Host_GenerateCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `generate`, which keeps the generated files of a manifest current. */
void addGenerateCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
