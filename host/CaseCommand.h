#ifndef Vespermoor_Host_CaseCommand_h
#define Vespermoor_Host_CaseCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `case`, which converts identifiers between naming styles. */
void addCaseCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
