#ifndef Vespermoor_Host_WatchCommand_h
#define Vespermoor_Host_WatchCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `watch`, which prints what changes below directories and in files. */
void addWatchCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
