#include "robot/world/units/internal/depth_renderer.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/robot/world/room.h"

namespace QV::robot {
namespace {

constexpr DepthOptics kOptics{1.02f, 0.79f, 0.4f, 8.0f};

/** The room with everything that a scene may hold, and people in it. */
struct Furnished {
  static WorldOptions options() {
    WorldOptions world;
    world.wallHeight = 1.5f;
    world.boxes = {{{4.5f, 3.3f, 0.5f}, 0.5f, 0.3f, 0.0f, 0.6f},
                   {{6.0f, 2.8f, 0.0f}, 0.5f, 0.8f, 0.7f, 0.8f}};
    world.holes = {{{4.5f, 2.5f, 0.2f}, 1.0f, 0.5f, 0.5f}};
    return world;
  }

  const Scene scene{test::makeRoom(), options()};
  const People people{{5.5f, 3.4f}, {3.0f, 1.0f}};
};

/** Measures along one ray through the pixel's corner. */
float castThrough(const cv::Size& size, int column, int row, const Furnished& room,
                  const Math::Transform& camera) {
  const float right = static_cast<float>(column) / static_cast<float>(size.width) - 0.5f;
  const float up = 0.5f - static_cast<float>(row) / static_cast<float>(size.height);
  const Math::Position3D way(1.0f, -right * 2.0f * std::tan(0.5f * kOptics.horizontalFOV),
                             up * 2.0f * std::tan(0.5f * kOptics.verticalFOV));
  const Math::Position3D start = Math::position3DFromTransform(camera);
  const Math::Position3D end = camera * way;
  const float length = norm(way);
  const Ray ray{
      start, {(end.x - start.x) / length, (end.y - start.y) / length, (end.z - start.z) / length}};
  const float depth = room.scene.castRay(ray, 20.0f, room.people) / length;
  return depth >= kOptics.minDepth && depth <= kOptics.maxDepth ? depth : 0.0f;
}

/** The share of pixels whose depth is another than that of a ray of their own. */
double shareOfWrongPixels(const Math::Transform& camera, float tolerance) {
  const Furnished room;
  DepthRenderer sut(room.scene, kOptics);
  // No whole number of vectors to a row.
  cv::Mat_<std::uint16_t> image(120, 158);
  sut.render(image, camera, room.people);
  int wrong = 0;
  for (int row = 0; row < image.rows; ++row) {
    for (int column = 0; column < image.cols; ++column) {
      const float expected = castThrough(image.size(), column, row, room, camera);
      const float shown = static_cast<float>(image(row, column)) * 0.001f;
      wrong += std::abs(shown - expected) > tolerance + 0.01f * expected ? 1 : 0;
    }
  }
  return wrong / static_cast<double>(image.total());
}

Math::Transform cameraAt(float x, float y, float z, float pitch, float yaw) {
  return Math::transformFromPose2D({x, y, yaw}) * Math::Transform::fromPosition({0.0f, 0.0f, z}) *
         Math::rotationFrom3DRotation(0.0f, pitch, 0.0f);
}

TEST(DepthRenderer, showsWhatARayThroughEachPixelMeets) {
  for (const float x : {2.0f, 2.7f, 3.3f}) {
    for (const float z : {0.3f, 0.5f, 0.75f, 1.1f}) {
      EXPECT_LE(shareOfWrongPixels(cameraAt(x, 3.0f, z, 0.0f, 0.05f), 0.001f), 0.001)
          << x << ", " << z;
    }
  }
}

TEST(DepthRenderer, aCameraThatLooksUpOrDownSeesTheSameExceptOnePixelWideEdges) {
  for (const float pitch : {-0.4f, 0.3f, 0.7f}) {
    EXPECT_LE(shareOfWrongPixels(cameraAt(2.5f, 3.0f, 1.1f, pitch, 0.0f), 0.02f), 0.03) << pitch;
  }
}

TEST(DepthRenderer, aCameraThatLooksStraightDownSeesTheFloorOnly) {
  const Furnished room;
  DepthRenderer sut(room.scene, kOptics);
  cv::Mat_<std::uint16_t> image(24, 32);
  sut.render(image, cameraAt(8.0f, 3.0f, 1.1f, 1.5707963f, 0.0f), room.people);
  EXPECT_NEAR(image(12, 16), 1100, 2);
  EXPECT_NEAR(image(0, 0), 1100, 2);
}

}  // namespace
}  // namespace QV::robot
