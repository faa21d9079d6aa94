#ifndef Vespermoor_Host_TagsCommand_h
#define Vespermoor_Host_TagsCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `tags`, which replaces tagged regions of a file. */
void addTagsCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
