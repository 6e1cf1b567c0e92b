#include "platform/math/shape3d.h"

namespace QV::Math {
namespace {

struct Kind {
  std::string operator()(const Box&) const { return "box"; }
  std::string operator()(const Sphere&) const { return "sphere"; }
  std::string operator()(const Cylinder&) const { return "cylinder"; }
  std::string operator()(const Capsule&) const { return "capsule"; }
  std::string operator()(const UnsupportedShape& shape) const { return shape.kind; }
};

}  // namespace

std::string getKind(const Shape3D& shape) {
  return std::visit(Kind(), shape);
}

}  // namespace QV::Math
