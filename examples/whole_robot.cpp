// A whole virtual robot in the project's own map: how near is what each sensor sees?

#include <iostream>

#include "session/open.h"

int main() {
  const auto session = QV::session::openVirtual("porter");
  session->subscribe("my navigation", {"Sonar", "Laser", "Asus"});
  session->run(boost::chrono::seconds(2));
  for (const auto& sensor : session->look().sensors)
    if (sensor.nearest) std::cout << sensor.name << ": " << *sensor.nearest << " m\n";
}
