#include "outlets/foxglove/internal/foxglove_channels.h"

namespace QV::outlets::foxglove {

Channels listChannels(const sensor::SensorManager& manager, const std::string& depthSensor) {
  Channels channels{{{kPose, "/tf", "foxglove.FrameTransform"},
                     {kMap, "/map", "foxglove.Grid"},
                     {kLog, "/log", "foxglove.Log"}},
                    {},
                    0,
                    0};
  for (const auto& [family, names] : manager.getAllSensorsByFamily()) {
    for (const std::string& name : names) {
      const auto id = kFirstSensor + static_cast<std::uint32_t>(channels.sensors.size());
      channels.all.push_back({id, "/sensors/" + name, "foxglove.PointCloud"});
      channels.sensors[id] = name;
    }
  }
  channels.fields = static_cast<std::uint32_t>(channels.all.size()) + 1;
  channels.all.push_back({channels.fields, "/fields_of_view", "foxglove.SceneUpdate"});
  if (depthSensor.empty()) return channels;
  channels.depth = channels.fields + 1;
  channels.all.push_back({channels.depth, "/depth", "foxglove.RawImage"});
  return channels;
}

}  // namespace QV::outlets::foxglove
