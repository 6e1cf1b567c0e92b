#include "outlets/foxglove/internal/foxglove_channels.h"

namespace QV::outlets::foxglove {

Channels listChannels(const sensor::SensorManager& manager) {
  Channels channels{{{kPose, "/tf", "foxglove.FrameTransform"},
                     {kMap, "/map", "foxglove.Grid"},
                     {kLog, "/log", "foxglove.Log"}},
                    {}};
  for (const auto& [family, names] : manager.getAllSensorsByFamily()) {
    for (const std::string& name : names) {
      const auto id = kFirstSensor + static_cast<std::uint32_t>(channels.sensors.size());
      channels.all.push_back({id, "/sensors/" + name, "foxglove.PointCloud"});
      channels.sensors[id] = name;
    }
  }
  return channels;
}

}  // namespace QV::outlets::foxglove
