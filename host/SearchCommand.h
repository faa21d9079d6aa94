#ifndef Vespermoor_Host_SearchCommand_h
#define Vespermoor_Host_SearchCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `search`, which finds a text in files without regard to case. */
void addSearchCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
