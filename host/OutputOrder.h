#ifndef Vespermoor_Host_OutputOrder_h
#define Vespermoor_Host_OutputOrder_h

#include <string>
#include <vector>

#include "Manifest.h"

namespace VespermoorEngine::Host {

/**
 * @brief The @p outputs of the manifest at @p path, each after those that it is made from, and
 * otherwise in the order given.
 *
 * Fills in @ref OutputFile::asInput. Two paths are the same file if they lead to the same place
 * when links are followed, however they are spelled.
 *
 * Throws @ref Failure if two outputs are the same file, if an output is the manifest or a template,
 * or if outputs are made from one another.
 */
std::vector<OutputFile> inOrder(const std::string& path, std::vector<OutputFile> outputs);

} // namespace VespermoorEngine::Host

#endif
