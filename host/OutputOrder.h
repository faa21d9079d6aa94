#ifndef Vespermoor_Host_OutputOrder_h
#define Vespermoor_Host_OutputOrder_h

#include <string>
#include <vector>

#include "Manifest.h"

namespace VespermoorEngine::Host {

/**
 * @brief The @p outputs of the manifest at @p path, each behind those that it is made from, and
 * otherwise in the order that they have.
 *
 * Notes in each of them by which paths it is an input of others. Files are told apart by where they
 * lie when links are followed, so that it does not matter how a path is spelled. Throws
 * @ref Failure where two outputs are the same file, where one is the manifest or a template, and
 * where some are made from one another.
 */
std::vector<OutputFile> inOrder(const std::string& path, std::vector<OutputFile> outputs);

} // namespace VespermoorEngine::Host

#endif
