#include "sensor/core/internal/health_finding.h"

#include <array>
#include <charconv>

namespace QV::sensor {
namespace {

std::string figureOf(double value, int decimals = 2) {
  std::array<char, 400> text;
  const auto result =
      std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, decimals);
  return {text.begin(), result.ptr};
}

std::string seconds(double value) {
  return figureOf(value) + " s";
}

std::string limitOf(const HealthFinding& finding, const char* unit) {
  return ", limit " + figureOf(finding.limit) + " " + unit;
}

std::string whyUnread(const HealthFinding& finding) {
  if (finding.other) return ": the reading of " + *finding.other + " does not return";
  return ": the refresh hangs";
}

std::string describeReadings(const HealthFinding& finding) {
  switch (finding.cause) {
    case HealthCause::contradicts:
      return std::string("its range is ") + figureOf(finding.own) + " m, that of " +
             *finding.other + " " + figureOf(finding.others) + " m, for " +
             seconds(finding.figure) + " of motion" + limitOf(finding, "s");
    case HealthCause::turnsUnseen:
      return "the same points while the robot turned " + figureOf(finding.figure) + " rad" +
             limitOf(finding, "rad");
    case HealthCause::goesUnseen:
      return "the same points while the robot went " + figureOf(finding.figure) + " m" +
             limitOf(finding, "m");
    case HealthCause::garbage:
      return figureOf(finding.figure, 0) + " of its last 20 readings are impossible, limit " +
             figureOf(finding.limit, 0);
    case HealthCause::flickers:
      return "its answer changed " + figureOf(finding.figure, 0) +
             " times in its last 20 readings, limit " + figureOf(finding.limit, 0);
    default:
      return {};
  }
}

std::string describeWaiting(const HealthFinding& finding) {
  const std::string taken = seconds(finding.figure);
  const std::string ofSeconds = limitOf(finding, "s");
  switch (finding.cause) {
    case HealthCause::old:
      return "its record is " + taken + " old" + ofSeconds;
    case HealthCause::unread:
      return "not read for " + taken + ofSeconds + whyUnread(finding);
    case HealthCause::neverRead:
      return "never read since it started " + taken + " ago" + ofSeconds + whyUnread(finding);
    case HealthCause::noRecord:
      return "no record for " + taken + ofSeconds;
    case HealthCause::noFirst:
      return "no fresh record since it started " + taken + " ago" + ofSeconds;
    case HealthCause::readingHangs:
      return "its reading has not returned for " + taken + ofSeconds;
    case HealthCause::startHangs:
      return "its hardware has been starting for " + taken + ofSeconds;
    case HealthCause::stopHangs:
      return "its hardware has been stopping for " + taken + ofSeconds;
    default:
      return {};
  }
}

std::string describeFault(const HealthFinding& finding) {
  switch (finding.cause) {
    case HealthCause::readingThrows:
      return "its reading fails";
    case HealthCause::startThrew:
      return "its start threw an exception";
    case HealthCause::badDiagnosis:
      return "its diagnosis is bad";
    case HealthCause::leftOn:
      return "its hardware was left on, since it failed to stop";
    default:
      return describeReadings(finding) + describeWaiting(finding);
  }
}

std::string describeSound(const HealthFinding& finding) {
  switch (finding.cause) {
    case HealthCause::unwanted:
      return "nobody has subscribed to it";
    case HealthCause::disabled:
      return "it is disabled";
    case HealthCause::unwatched:
      return "it runs, but health is switched off";
    case HealthCause::awaitsFirst:
      return "no fresh record yet, " + seconds(finding.figure) + " after its start";
    case HealthCause::startGoesOn:
      return "its hardware has been starting for " + seconds(finding.figure);
    case HealthCause::excused:
      return std::string("no record, which is normal: ").append(finding.excuse);
    default:
      return "its records are fresh";
  }
}

// An error's line break becomes a blank, and none after a blank.
std::string inOneParagraph(const std::string& text) {
  std::string paragraph;
  for (const char letter : text) {
    const bool isBreak = letter == '\n';
    if (!isBreak || !paragraph.ends_with(' ')) paragraph += isBreak ? ' ' : letter;
  }
  return paragraph;
}

}  // namespace

std::string describeFinding(const HealthFinding& finding,
                            const std::optional<ko::log::Record>& trouble) {
  if (!isFault(finding.state)) return describeSound(finding);
  std::string text = describeFault(finding);
  if (trouble) text += ": " + ko::log::onOneLine(inOneParagraph(trouble->message));
  return text;
}

bool hasTrouble(HealthCause cause) {
  switch (cause) {
    case HealthCause::old:
    case HealthCause::garbage:
    case HealthCause::noRecord:
    case HealthCause::noFirst:
    case HealthCause::readingThrows:
    case HealthCause::startThrew:
    case HealthCause::badDiagnosis:
    case HealthCause::leftOn:
      return true;
    default:
      return false;
  }
}

std::string agoText(double seconds) {
  return "; not seen for " + figureOf(seconds) + " s";
}

std::string remedyFor(HealthCause cause) {
  switch (cause) {
    case HealthCause::unwanted:
      return "subscribe";
    case HealthCause::disabled:
      return "enable it (in a program: enableSensorOrFamily() and lookAgain())";
    case HealthCause::unwatched:
    case HealthCause::awaitsFirst:
    case HealthCause::startGoesOn:
    case HealthCause::fresh:
    case HealthCause::excused:
      return {};
    case HealthCause::neverRead:
    case HealthCause::readingHangs:
    case HealthCause::unread:
    case HealthCause::startHangs:
    case HealthCause::stopHangs:
      return "wait: the driver's call must return; it can't be cancelled";
    case HealthCause::startThrew:
      return "subscribe again once its hardware is back";
    case HealthCause::badDiagnosis:
      return "set its diagnosis to good once its hardware is back (in a program: "
             "setSensorDiagnosis() "
             "and lookAgain())";
    case HealthCause::leftOn:
      return "set its diagnosis to good (in a program: setSensorDiagnosis()), then subscribe and "
             "unsubscribe, which stops it again";
    case HealthCause::contradicts:
      return "find out which of the two is right; ends when they agree";
    default:
      return "ends when good records come; check the driver";
  }
}

}  // namespace QV::sensor
