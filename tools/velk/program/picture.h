// SPDX-License-Identifier: MIT
/// Makes pictures with Graphviz' dot.
#ifndef CORVANE_VELK_PICTURE_H
#define CORVANE_VELK_PICTURE_H

#include <string>

namespace Corvane::Velk {

/// Writes the drawing to a file. The end of its name says how: as it is for ".dot", as a picture for ".svg" and ".png".
///
/// Errors  Failure (input.h): the name ends otherwise, `dot` is not there or fails, or the file can't be written.
void writePicture(const std::string& drawing, const std::string& file);

} // namespace Corvane::Velk

#endif
