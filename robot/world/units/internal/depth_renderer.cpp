#include "robot/world/units/internal/depth_renderer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "robot/world/units/internal/depth_row.h"

namespace QV::robot {
namespace {

constexpr float kNothing = std::numeric_limits<float>::infinity();
constexpr float kMillimetres = 1000.0f;
// A row that looks steeper than this shows nothing but the floor.
constexpr float kLeastForward = 0.2f;

/** The depths at which a ray that rises by `up` is between two heights above its start. */
Stretch depthsBetween(float bottom, float top, float up) {
  if (up == 0.0f) return bottom <= 0.0f && top >= 0.0f ? Stretch{0.0f, kNothing} : Stretch{1, 0};
  const auto [from, to] = std::minmax({bottom / up, top / up});
  return {from, to};
}

/** Converts a depth, from 0 to kFarthest, which also stands for no depth. */
std::uint16_t toMillimetres(float depth) {
  const float millimetres = std::max(0.0f, depth * kMillimetres + 0.5f);
  return millimetres < kFarthest ? static_cast<std::uint16_t>(millimetres) : kFarthest;
}

/** The depths of the walls that a row does not look over; heights count from the camera. */
DepthLimits wallLimits(const DepthRenderer::Row& row, float headroom) {
  if (row.up > 0.0f) return {0, toMillimetres(headroom / row.up)};
  if (headroom >= 0.0f) return {0, kFarthest};
  return {row.up < 0.0f ? toMillimetres(headroom / row.up) : kFarthest, kFarthest};
}

}  // namespace

DepthRenderer::DepthRenderer(const Scene& scene, const DepthOptics& optics)
    : scene(scene), optics(optics), steepest(std::tan(0.5f * optics.verticalFOV)) {}

void DepthRenderer::render(cv::Mat_<std::uint16_t>& image, const Math::Transform& camera,
                           const People& people) {
  xAim(image.size(), camera);
  xLookAround(people);
  for (int row = 0; row < image.rows; ++row) xDrawRow(image[row], xRowAt(row));
}

void DepthRenderer::xAim(const cv::Size& newSize, const Math::Transform& camera) {
  size = newSize;
  position = Math::position3DFromTransform(camera);
  heading = Math::pose2DFromTransform(camera).theta;
  // Pitch is positive downwards, like a rotation about y.
  sinPitch = std::clamp(-camera(2, 0), -1.0f, 1.0f);
  cosPitch = std::sqrt(1.0f - sinPitch * sinPitch);
  const auto width = static_cast<float>(size.width);
  spacing = 2.0f * std::tan(0.5f * optics.horizontalFOV) / width;
  const float least =
      std::max(kLeastForward, std::min(xRowAt(0).forward, xRowAt(size.height - 1).forward));
  middleColumn = static_cast<std::size_t>(0.5f * width / least) + 1;
  columnsChosenFor = 0.0f;
  columnOfPixel.resize(static_cast<std::size_t>(size.width));
  wallOfPixel.resize(columnOfPixel.size());
}

DepthRenderer::Row DepthRenderer::xRowAt(int row) const {
  const float share = static_cast<float>(row) / static_cast<float>(size.height);
  const float up = (0.5f - share) * 2.0f * steepest;
  return {cosPitch + up * sinPitch, up * cosPitch - sinPitch};
}

void DepthRenderer::xLookAround(const People& people) {
  walls.clear();
  columns.clear();
  const auto middle = static_cast<float>(middleColumn);
  for (std::size_t i = 0; i <= 2 * middleColumn; ++i) {
    xLookAlong((middle - static_cast<float>(i)) * spacing, people);
  }
}

void DepthRenderer::xLookAlong(float aside, const People& people) {
  const float length = std::hypot(1.0f, aside);
  const float direction = heading + std::atan(aside);
  // No row looks farther forward than along the line that is level.
  const float reach = optics.maxDepth * length * std::hypot(1.0f, steepest);
  walls.push_back(scene.findWall({position.x, position.y}, direction, reach) / length);
  const Ray ray{position, {std::cos(direction), std::sin(direction), 0.0f}};
  const auto add = [&](std::vector<Piece>& pieces, const std::optional<Stretch>& inside,
                       float bottom, float top) {
    if (!inside || inside->from > reach) return;
    pieces.push_back(
        {{inside->from / length, inside->to / length}, bottom - position.z, top - position.z});
  };
  Column& column = columns.emplace_back();
  for (const Block& box : scene.getBoxes()) {
    add(column.solids, box.clipOutline(ray), box.getBottom(), box.getTop());
  }
  for (const Math::Position2D& person : people) {
    add(column.solids, clipPerson(ray, person), 0.0f, kPersonHeight);
  }
  for (const Block& hole : scene.getHoles()) {
    add(column.holes, hole.clipOutline(ray), hole.getBottom(), hole.getTop());
  }
}

void DepthRenderer::xDrawRow(std::uint16_t* pixels, const Row& row) {
  const DepthLimits seen{toMillimetres(optics.minDepth), toMillimetres(optics.maxDepth)};
  const std::uint16_t floor = toMillimetres(xFloorDepth(row));
  if (row.forward < kLeastForward) {
    std::fill_n(pixels, size.width, seen.contain(floor) ? floor : std::uint16_t{0});
    return;
  }
  xChooseColumns(row);
  const DepthLimits walls = wallLimits(row, scene.getWallHeight() - position.z);
  drawPlainRow(wallOfPixel, walls, floor, seen, pixels);
  for (const std::size_t i : busyPixels) {
    const Column& column = columns[columnOfPixel[i]];
    const std::uint16_t wall = walls.contain(wallOfPixel[i]) ? wallOfPixel[i] : kFarthest;
    const std::uint16_t depth = std::min(wall, toMillimetres(xDepthBefore(row, column)));
    pixels[i] = seen.contain(depth) ? depth : std::uint16_t{0};
  }
}

void DepthRenderer::xChooseColumns(const Row& row) {
  if (row.forward == columnsChosenFor) return;
  columnsChosenFor = row.forward;
  busyPixels.clear();
  const float middle = 0.5f * static_cast<float>(size.width);
  for (std::size_t i = 0; i < columnOfPixel.size(); ++i) {
    const float away = (static_cast<float>(i) - middle) / row.forward;
    columnOfPixel[i] =
        static_cast<std::size_t>(static_cast<float>(middleColumn) + std::round(away));
    wallOfPixel[i] = toMillimetres(walls[columnOfPixel[i]] / row.forward);
    if (!columns[columnOfPixel[i]].isEmpty()) busyPixels.push_back(i);
  }
}

float DepthRenderer::xFloorDepth(const Row& row) const {
  return row.up < 0.0f ? position.z / -row.up : kNothing;
}

float DepthRenderer::xDepthBefore(const Row& row, const Column& column) const {
  float depth = xFloorDepth(row);
  for (const Piece& hole : column.holes) {
    const float end = hole.forward.to / row.forward;
    if (depth * row.forward >= hole.forward.from && depth < end) {
      depth = std::min(hole.bottom / row.up, end);
    }
  }
  for (const Piece& piece : column.solids) {
    const Stretch inside = depthsBetween(piece.bottom, piece.top, row.up);
    const float from = std::max(piece.forward.from / row.forward, inside.from);
    const float to = std::min(piece.forward.to / row.forward, inside.to);
    if (from <= to) depth = std::min(depth, from);
  }
  return depth;
}

}  // namespace QV::robot
