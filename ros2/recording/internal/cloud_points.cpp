#include "ros2/recording/internal/cloud_points.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace QV::ros2 {
namespace {

constexpr std::uint8_t kFloat32 = 7;
constexpr std::uint8_t kFloat64 = 8;
constexpr float kFloor = 0.05f;
constexpr float kHead = 2.0f;
constexpr float kMostDepth = 65.535f;

const sensor_msgs::PointField& fieldOf(const sensor_msgs::PointCloud2& cloud, const char* name) {
  const auto found =
      std::ranges::find_if(cloud.fields, [&](const auto& field) { return field.name == name; });
  if (found == cloud.fields.end())
    throw std::runtime_error(std::string("a field ") + name + " expected, there is none");
  const std::size_t size = found->datatype == kFloat64 ? sizeof(double) : sizeof(float);
  if ((found->datatype != kFloat32 && found->datatype != kFloat64) || cloud.is_bigendian ||
      found->offset + size > cloud.point_step)
    throw std::runtime_error(std::string("a little-endian float expected for ") + name);
  return *found;
}

float numberAt(const std::uint8_t* point, const sensor_msgs::PointField& field) {
  if (field.datatype == kFloat32) {
    float number = 0.0f;
    std::memcpy(&number, point + field.offset, sizeof number);
    return number;
  }
  double number = 0.0;
  std::memcpy(&number, point + field.offset, sizeof number);
  return static_cast<float>(number);
}

std::uint16_t millimetresOf(float metres) {
  const bool isThere = metres > 0.0f && metres < kMostDepth;
  return static_cast<std::uint16_t>(isThere ? std::lround(1000.0f * metres) : 0);
}

}  // namespace

std::vector<Math::Position3D> pointsOf(const sensor_msgs::PointCloud2& cloud) {
  const auto& x = fieldOf(cloud, "x");
  const auto& y = fieldOf(cloud, "y");
  const auto& z = fieldOf(cloud, "z");
  const std::size_t count =
      std::min(std::size_t{cloud.width} * cloud.height, cloud.data.size() / cloud.point_step);
  std::vector<Math::Position3D> points;
  points.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* point = cloud.data.data() + i * cloud.point_step;
    const Math::Position3D read(numberAt(point, x), numberAt(point, y), numberAt(point, z));
    // A sensor's own place stands for no echo.
    const bool isThere = read.x != 0.0f || read.y != 0.0f || read.z != 0.0f;
    if (isThere && std::isfinite(read.x + read.y + read.z)) points.push_back(read);
  }
  return points;
}

bool isObstacle(const Math::Position3D& inBase, bool knowsFloor) {
  return knowsFloor ? inBase.z > kFloor && inBase.z < kHead : std::abs(inBase.z) < kHead;
}

cv::Mat_<std::uint16_t> depthOf(const sensor_msgs::Image& image) {
  const bool isMetres = image.encoding == "32FC1";
  const std::size_t pixel = isMetres ? sizeof(float) : sizeof(std::uint16_t);
  const bool isDepth = (isMetres || image.encoding == "16UC1" || image.encoding == "mono16") &&
                       image.is_bigendian == 0 && image.width > 0 && image.height > 0 &&
                       image.width < 65'536 && image.height < 65'536 &&
                       image.step >= pixel * image.width &&
                       image.data.size() >= std::size_t{image.step} * image.height;
  if (!isDepth) throw std::runtime_error("a little-endian depth image of its size expected");
  cv::Mat_<std::uint16_t> depth(static_cast<int>(image.height), static_cast<int>(image.width));
  for (int row = 0; row < depth.rows; ++row) {
    const std::uint8_t* from = image.data.data() + std::size_t{image.step} * row;
    if (!isMetres) {
      std::memcpy(depth[row], from, pixel * image.width);
      continue;
    }
    for (int column = 0; column < depth.cols; ++column) {
      float metres = 0.0f;
      std::memcpy(&metres, from + pixel * column, sizeof metres);
      depth(row, column) = millimetresOf(metres);
    }
  }
  return depth;
}

}  // namespace QV::ros2
