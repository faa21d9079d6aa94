#ifndef Vespermoor_Host_JsonCommand_h
#define Vespermoor_Host_JsonCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `json`, which prints a document or a value in it, and writes values into it. */
void addJsonCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
