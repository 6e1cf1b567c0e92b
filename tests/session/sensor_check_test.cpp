#include "session/sensor_check.h"

#include <boost/make_shared.hpp>

#include "tests/session/session_in_room.h"
#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::session {
namespace {

const Math::Pose2D kStart(5.0f, 3.0f, 0.0f);

TEST(CheckSensors, judgesAManagerByTheKindsOfItsSensors) {
  test::LogCapture log;
  OpenOptions options = test::inRoom(kStart);
  options.faults = {{"BackSonar", robot::FaultKind::off}, {"FrontLaser", robot::FaultKind::off}};
  const auto session = openVirtual("porter", options);
  CheckOptions wanted;
  wanted.sensors = {"BackSonar", "FrontLaser", "FrontSonar", "Touch"};
  std::vector<double> told;
  wanted.goesOn = [&told](double done) {
    told.push_back(done);
    return true;
  };
  const auto checked = checkSensors(session->getManager(), wanted);
  ASSERT_EQ(checked.size(), 4u);
  EXPECT_EQ(checked[0].verdict, Verdict::noRecord);
  EXPECT_EQ(checked[1].verdict, Verdict::failedToStart);
  EXPECT_THAT(checked[1].why, HasSubstr("Timeout while setting operation Mode"));
  EXPECT_EQ(checked[2].verdict, Verdict::works);
  EXPECT_EQ(checked[3].verdict, Verdict::works) << "silence is sound for a bumper";
  EXPECT_THAT(told, ElementsAre(0.25, 0.5, 0.75, 1.0));
  EXPECT_THAT(session->getManager().getSubscribers(), IsEmpty());
}

TEST(CheckSensors, judgesEachSensorByItsKindNotByItsFamily) {
  test::LogCapture log;
  const test::TemporaryFolder folder;
  const auto description = folder.write("r.urdf", R"(<robot name="r"><link name="base"/>
    <sensor name="Empty" type="Ledge"/><sensor name="Mat" type="Mat"/>
    <sensor name="Scan" type="Scan"/></robot>)");
  // The first of the family is the one that may be silent.
  Model::SensorKind mat{41, "Mat", "Floor", Model::PointMeaning::touch, Model::Silence::always};
  Model::SensorKind ledge{42, "Ledge", "Floor", Model::PointMeaning::zone};
  ledge.leavesOutMisses = false;
  Model::SensorKind scan{43, "Scan", "Floor", Model::PointMeaning::scan};
  OpenOptions options = test::inRoom(kStart);
  for (const auto& kind : {mat, ledge, scan}) {
    options.sensors.add(
        kind, [](const sensor::SensorOrder& order) -> sensor::SensorFactory::Sensors {
          const auto made =
              boost::make_shared<test::FakeSensor>(order.config.name, order.kind.family);
          made->hasRecord = order.kind.type != 41;
          made->points.clear();
          made->stamp = [] { return ko::Clock::now(); };
          return {made};
        });
  }
  const auto session = openVirtual(description, options);
  const auto checked = checkSensors(session->getManager());
  ASSERT_EQ(checked.size(), 3u);
  EXPECT_EQ(checked[0].verdict, Verdict::badData) << "Empty";
  EXPECT_EQ(checked[0].why, "its records have no points");
  EXPECT_EQ(checked[1].verdict, Verdict::works) << "Mat";
  EXPECT_EQ(checked[2].verdict, Verdict::works) << "Scan, which meets nothing";
}

TEST(FindDescriptionFaults, findsMistakesAndUnwrittenMemoryKeys) {
  test::LogCapture log;
  const test::TemporaryFolder folder;
  const auto robot = folder.write("r.urdf", R"(<robot name="r"><link name="base"/>
    <sensor name="Front" type="Sonar"><property key="minimumDetectionDistance" value="0.1"/>
      <property key="maximumDetectionDistance" value="300 cm"/>
      <property key="horizontalAngularRange" value="1"/><memory_key>Front</memory_key></sensor>
    <sensor name="Hole" type="HoleLaser"><property key="status" value="NoOne/Status"/></sensor>
    <sensor name="Touch" type="Touch"><property key="period" value="0.2 s"/>
      <property key="limits"
        value=" age=0.5 turn=off silence=0.5s reading=-1 garbge=0.1 Hole:age=1 start "/></sensor>
    </robot>)");
  const auto faultsOf = [](const std::string& description) {
    const auto session = openVirtual(description, test::inRoom(kStart));
    session->run(boost::chrono::seconds(1));
    std::vector<std::string> texts;
    for (const auto& fault : findDescriptionFaults(*session)) texts.push_back(fault.toText());
    return texts;
  };
  const auto texts = faultsOf(robot);
  EXPECT_THAT(texts, Contains(AllOf(StartsWith("Front: "), HasSubstr("\"300 cm\""))));
  EXPECT_THAT(texts,
              Contains("Hole: nobody writes memory key \"NoOne/Status\", a driver expected"));
  std::vector<std::string> ofLimits;
  for (const auto& text : texts) {
    if (text.starts_with("Touch: ")) ofLimits.push_back(text.substr(16));
  }
  EXPECT_THAT(ofLimits,
              ElementsAre("\"period\" is \"0.2 s\", seconds expected",
                          "\"limits\" says \"silence=0.5s\", a number above 0, or off, expected",
                          "\"limits\" says \"reading=-1\", a number above 0, or off, expected",
                          "\"limits\" says \"garbge=0.1\", one of " +
                              sensor::namesOfHealthLimits() + " expected",
                          "\"limits\" says \"Hole:age=1\", LIMIT=VALUE or LIMIT=off expected",
                          "\"limits\" says \"start\", LIMIT=VALUE or LIMIT=off expected"));
  EXPECT_THAT(faultsOf("porter"), IsEmpty());
}

}  // namespace
}  // namespace QV::session
