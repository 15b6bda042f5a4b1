#pragma once

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::viewer {

/// Makes the rotations of an agent's element and of all below it unit quaternions, where rounding is all that keeps
/// their length from 1: where it is off by less than a thousandth. Others stay as they are, and so does what can't be
/// read.
///
/// Documents hold six digits, agents take a quaternion as it stands for one of unit length, and a document that is
/// written tells the quaternion of the matrix that came of it: without this, a scene that is read and written again and
/// again turns a little further each time. The function stands in examples/saved_scene too, for hosts to take.
void makeRotationsUnit(xml_parser::XMLNode& agent);

} // namespace tessarin::viewer
