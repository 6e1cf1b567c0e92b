#include <algorithm>
#include <array>
#include <bit>

#include <gmock/gmock.h>

#include "ros2/messages/geometry_msgs.h"
#include "ros2/messages/report_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/support/filled_message.h"

namespace QV::ros2 {
namespace {

/**
 * Hashes as robots of others carry them in their recordings and user data, or computed apart from
 * us.
 */
TEST(MessageTypes, hashesEqualThoseOfRos) {
  const std::pair<const char*, const char*> kKnown[] = {
      {"sensor_msgs/msg/LaserScan",
       "64c191398013af96509d518dac71d5164f9382553fce5c1f8cca5be7924bd828"},
      {"sensor_msgs/msg/Range", "b42b62562e93cbfe9d42b82fe5994dfa3d63d7d5c90a317981703f7388adff3a"},
      {"sensor_msgs/msg/PointCloud2",
       "9198cabf7da3796ae6fe19c4cb3bdd3525492988c70522628af5daa124bae2b5"},
      {"sensor_msgs/msg/Image", "d31d41a9a4c4bc8eae9be757b0beed306564f7526c88ea6a4588fb9582527d47"},
      {"sensor_msgs/msg/CameraInfo",
       "b3dfd68ff46c9d56c80fd3bd4ed22c7a4ddce8c8348f2f59c299e73118e7e275"},
      {"sensor_msgs/msg/JointState",
       "a13ee3a330e346c9d87b5aa18d24e11690752bd33a0350f11c5882bc9179260e"},
      {"geometry_msgs/msg/Twist",
       "9c45bf16fe0983d80e3cfe750d6835843d265a9a6c46bd2e609fcddde6fb8d2a"},
      {"geometry_msgs/msg/TwistStamped",
       "5f0fcd4f81d5d06ad9b4c4c63e3ea51b82d6ae4d0558f1d475229b1121db6f64"},
      {"geometry_msgs/msg/TransformStamped",
       "0a241f87d04668d94099cbb5ba11691d5ad32c2f29682e4eb5653424bd275206"},
      {"geometry_msgs/msg/PoseStamped",
       "10f3786d7d40fd2b54367835614bff85d4ad3b5dab62bf8bca0cc232d73b4cd8"},
      {"geometry_msgs/msg/PoseWithCovarianceStamped",
       "26432f9803e43727d3c8f668d1fdb3c630f548af631e2f4e31382371bfea3b6e"},
      {"nav_msgs/msg/Odometry", "3cc97dc7fb7502f8714462c526d369e35b603cfc34d946e3f2eda2766dfec6e0"},
      {"nav_msgs/msg/OccupancyGrid",
       "8d348150c12913a31ee0ec170fbf25089e4745d17035792a1ba94d6f0bc0cfc7"},
      {"nav_msgs/msg/Path", "1957a5bb3cee5da65c4e52e52b65a93df227efce4c20f8458b36e73066ca334b"},
      {"tf2_msgs/msg/TFMessage",
       "e369d0f05a23ae52508854b66f6aa0437f3449d652e8cbf22d5abe85d020f087"},
      {"rosgraph_msgs/msg/Clock",
       "692f7a66e93a3c83e71765d033b60349ba68023a8c689a79e48078bcb5c58564"},
      {"std_msgs/msg/String", "df668c740482bbd48fb39d76a70dfd4bd59db1288021743503259e948f6b1a18"},
      {"vision_msgs/msg/Detection3DArray",
       "793f5eab9595ac1c0da07873cc859db42eae51f0ee76056db8562515d830e018"},
      {"visualization_msgs/msg/Marker",
       "45b13ccf791f225962bf74e746f9644518855d783a6f42ba0cc14fde2b4f3ce0"},
      {"visualization_msgs/msg/MarkerArray",
       "86cb8800b6fb05b5eff1abd7a56f62a5641d3ae9a1c29e78e67e704f1d067dcf"},
      {"diagnostic_msgs/msg/DiagnosticArray",
       "5a8a36efb05fb25070fa0fb3810290c0e6cd4862b54a8fb975a1ee8dc55a333e"}};
  for (const auto& [name, hash] : kKnown) {
    const MessageType* const type = findMessageType(name);
    ASSERT_NE(type, nullptr) << name;
    EXPECT_EQ(type->getHash(), std::string("RIHS01_") + hash) << name;
  }
}

TEST(MessageTypes, namesAndSchemaFollowFromTheFields) {
  const MessageType& sut = geometry_msgs::TwistStamped::getType();
  EXPECT_EQ(sut.getName(), "geometry_msgs/msg/TwistStamped");
  EXPECT_EQ(sut.getDdsName(), "geometry_msgs::msg::dds_::TwistStamped_");
  const std::string line(80, '=');
  EXPECT_EQ(sut.getSchema(),
            "std_msgs/Header header\ngeometry_msgs/Twist twist\n" + line +
                "\nMSG: geometry_msgs/Twist\ngeometry_msgs/Vector3 linear\n"
                "geometry_msgs/Vector3 angular\n" +
                line + "\nMSG: geometry_msgs/Vector3\nfloat64 x\nfloat64 y\nfloat64 z\n" + line +
                "\nMSG: std_msgs/Header\nbuiltin_interfaces/Time stamp\nstring frame_id\n" + line +
                "\nMSG: builtin_interfaces/Time\nint32 sec\nuint32 nanosec\n");
  EXPECT_EQ(findMessageType("geometry_msgs/Twist"), nullptr);
}

TEST(Cdr, everyMessageSurvivesEncodingAndDecoding) {
  for (const MessageType* const type : getMessageTypes()) {
    SCOPED_TRACE(type->getName());
    const auto message = test::fillMessage(*type);
    Bytes cdr;
    type->encode(message.get(), cdr);
    const auto back = layoutOf(*type).make();
    type->decode(cdr, back.get());
    EXPECT_EQ(test::toJson(*type, back.get()), test::toJson(*type, message.get()));
    EXPECT_NE(test::toJson(*type, back.get()), test::toJson(*type, layoutOf(*type).make().get()));
  }
}

/** CDR by hand, in either byte order. */
class HandWritten {
 public:
  explicit HandWritten(std::endian order) : bytes{0, order == std::endian::little, 0, 0} {}

  template <typename Number>
  HandWritten& number(Number value) {
    while ((bytes.size() - 4) % sizeof value != 0) bytes.push_back(0);
    auto raw = std::bit_cast<std::array<std::uint8_t, sizeof value>>(value);
    if (bytes[1] == 0) std::reverse(raw.begin(), raw.end());
    bytes.insert(bytes.end(), raw.begin(), raw.end());
    return *this;
  }
  HandWritten& text(const std::string& text) {
    number(static_cast<std::uint32_t>(text.size() + 1));
    bytes.insert(bytes.end(), text.c_str(), text.c_str() + text.size() + 1);
    return *this;
  }

  Bytes bytes;
};

sensor_msgs::JointState someJoints() {
  return {{{-3, 5}, "base"}, {"left", "w"}, {0.25, -1.5}, {}, {7.0}};
}

HandWritten someJointsByHand(std::endian order) {
  HandWritten cdr(order);
  cdr.number(-3).number(5u).text("base").number(2u).text("left").text("w");
  // No padding where there are no elements.
  cdr.number(2u).number(0.25).number(-1.5).number(0u).number(1u).number(7.0);
  return cdr;
}

TEST(Cdr, isAlignedFromTheEndOfItsHeaderAndReadInEitherByteOrder) {
  EXPECT_EQ(toCdr(someJoints()), someJointsByHand(std::endian::little).bytes);
  for (const auto order : {std::endian::little, std::endian::big}) {
    Bytes cdr = someJointsByHand(order).bytes;
    cdr.resize(cdr.size() + 3);  // As some writers pad their messages.
    EXPECT_EQ(fromCdr<sensor_msgs::JointState>(cdr), someJoints());
  }
}

TEST(Cdr, aRangeOfHumbleHasNoVariance) {
  const sensor_msgs::Range range{{{1, 2}, "sonar"}, 0, 0.5f, 0.1f, 4.0f, 1.25f, 9.0f};
  Bytes cdr;
  sensor_msgs::Range::getTypeWithoutVariance().encode(&range, cdr);
  EXPECT_EQ(cdr.size() + sizeof range.variance, toCdr(range).size());
  sensor_msgs::Range sut;
  sensor_msgs::Range::getTypeWithoutVariance().decode(cdr, &sut);
  EXPECT_EQ(sut.range, 1.25f);
  EXPECT_EQ(sut.variance, 0.0f);
}

template <typename Message>
std::string refusalOf(const Bytes& cdr) {
  try {
    fromCdr<Message>(cdr);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "read";
}

TEST(Cdr, malformedCdrIsRefusedWithItsByte) {
  using std_msgs::String;
  const HandWritten little(std::endian::little);
  EXPECT_EQ(refusalOf<String>({0, 1}), "std_msgs/msg/String, byte 0: 4 bytes expected, 2 given");
  EXPECT_EQ(refusalOf<String>({0, 7, 0, 0}),
            "std_msgs/msg/String, byte 0: encoding 0 or 1 expected, 7 given");
  EXPECT_EQ(refusalOf<String>(HandWritten(little).number(2u).number('a').number('b').bytes),
            "std_msgs/msg/String.data, byte 8: a string that ends with 0 expected, another byte "
            "given");
  EXPECT_EQ(refusalOf<String>(HandWritten(little).text("").number(0u).bytes),
            "std_msgs/msg/String, byte 9: the end expected, 7 more bytes given");
  HandWritten joints(little);
  joints.number(0).number(0u).text("").number(0x40000000u);
  EXPECT_EQ(refusalOf<sensor_msgs::JointState>(joints.bytes),
            "sensor_msgs/msg/JointState.name, byte 24: 4294967296 bytes expected, 0 given");
  HandWritten state(little);
  state.number(1u).text("Sonar").number(std::uint8_t{2});
  state.bytes.resize(40);
  EXPECT_EQ(
      refusalOf<qv_msgs::SensorStates>(state.bytes),
      "qv_msgs/msg/SensorStates.sensors.started, byte 18: 0 or 1 expected, another byte given");
}

TEST(Cdr, anyMessageCutAnywhereIsRefused) {
  for (const MessageType* const type : getMessageTypes()) {
    Bytes cdr;
    type->encode(test::fillMessage(*type).get(), cdr);
    for (std::size_t size = 0; size < cdr.size(); ++size) {
      // A vector of its own, so that the address sanitizer sees what is read behind its end.
      const Bytes cut(cdr.begin(), cdr.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_THROW(type->decode(cut, layoutOf(*type).make().get()), std::runtime_error)
          << type->getName() << " of " << size;
    }
  }
}

}  // namespace
}  // namespace QV::ros2
