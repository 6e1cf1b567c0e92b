#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/math/position.h"
#include "platform/math/transform.h"

namespace tinyxml2 {
class XMLElement;
}

/** Strict reading of a robot description's elements; every error names the line and the element. */
namespace QV::Model::detail {

using tinyxml2::XMLElement;

/** The `<link>` elements by name. */
using LinkElements = std::map<std::string, const XMLElement*>;

/** Throws std::runtime_error: where `element` stands, then `problem`. */
[[noreturn]] void fail(const XMLElement& element, const std::string& problem);

/**
 * Throws at an element before which there are as many of its sort as a robot may have: some of what
 * is done with a robot takes as long as the square of their number.
 */
void checkCount(const XMLElement& element, std::size_t before);

/** The text in quotes. */
std::string withQuotes(const std::string& text);

/** The children of that name, in order. */
std::vector<const XMLElement*> childrenOf(const XMLElement& element, const char* name);
/** The only child of that name or null; a second one is an error. */
const XMLElement* optionalChild(const XMLElement& element, const char* name);
const XMLElement& requiredChild(const XMLElement& element, const char* name);

/** An attribute's text, which may be empty, or nothing. */
std::optional<std::string> optionalText(const XMLElement& element, const char* attribute);
/** An attribute's text, which must be there and not be empty. */
std::string requiredText(const XMLElement& element, const char* attribute);

/** The attribute "link", which must name one of `links`. */
std::string requiredLink(const XMLElement& element, const LinkElements& links);

int requiredInteger(const XMLElement& element, const char* attribute);
float requiredNumber(const XMLElement& element, const char* attribute);
float numberOr(const XMLElement& element, const char* attribute, float absent);
/** A number of at least 0. */
float requiredSize(const XMLElement& element, const char* attribute);

/** Three numbers between blanks. */
std::optional<Math::Position3D> optionalVector(const XMLElement& element, const char* attribute);
Math::Position3D requiredVector(const XMLElement& element, const char* attribute);

/** The `<origin xyz= rpy=>` of an element; the identity without one. */
Math::Transform originOf(const XMLElement& element);

}  // namespace QV::Model::detail
