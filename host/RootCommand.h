#ifndef Vespermoor_Host_RootCommand_h
#define Vespermoor_Host_RootCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `root`, which prints where the executables and the editor's data lie. */
void addRootCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
