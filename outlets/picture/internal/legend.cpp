#include "outlets/picture/internal/legend.h"

#include <algorithm>
#include <map>
#include <set>

#include <opencv2/imgproc.hpp>

#include "outlets/picture/internal/palette.h"
#include "session/internal/number_text.h"

namespace QV::outlets {
namespace {

constexpr int kMargin = 24;
constexpr int kLine = 30;
constexpr double kTextSize = 0.55;

int textWidth(const std::string& text) {
  return cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, kTextSize, 1, nullptr).width;
}

void write(cv::Mat& page, const std::string& text, const cv::Point& at, double size = kTextSize) {
  cv::putText(page, text, at, cv::FONT_HERSHEY_SIMPLEX, size, kInk, 1, cv::LINE_AA);
}

struct Item {
  std::string text;
  cv::Scalar colour;
};

// Entries from left to right, in as many lines as they need; draws only when given a page.
int layOut(const std::vector<Item>& items, int width, int top, cv::Mat* page) {
  int x = kMargin;
  int y = top;
  for (const Item& item : items) {
    const int wide = 26 + textWidth(item.text) + 28;
    if (x > kMargin && x + wide > width - kMargin) {
      x = kMargin;
      y += kLine;
    }
    if (page) {
      cv::circle(*page, {x + 8, y - 5}, 8, item.colour, cv::FILLED, cv::LINE_AA);
      write(*page, item.text, {x + 26, y});
    }
    x += wide;
  }
  return y + kLine;
}

std::vector<Item> itemsOf(const session::Snapshot& snapshot, bool hasWay) {
  std::map<std::string, std::set<std::string>> families;
  for (const auto& sensor : snapshot.sensors) {
    for (const auto& record : sensor.records) families[sensor.family].insert(record.sensorName);
  }
  std::vector<Item> items;
  for (const auto& [family, sensors] : families) {
    std::string names;
    for (const auto& sensor : sensors) names += (names.empty() ? "" : ", ") + sensor;
    items.push_back({family + ": " + names, paintOf(family)});
  }
  if (hasWay) items.push_back({"robot's way", kPath});
  if (!snapshot.map) return items;
  items.push_back({"unknown", kUnknown});
  items.push_back({"occupied", kInk});
  return items;
}

// The longest round length that takes at most a quarter of the width.
double scaleBarMetres(double pixelsPerMetre, int width) {
  double length = 0.1;
  for (const double candidate : {0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 50.0, 100.0}) {
    if (candidate * pixelsPerMetre <= width / 4.0) length = candidate;
  }
  return length;
}

void drawScaleBar(cv::Mat& page, double pixelsPerMetre, int y) {
  const double metres = scaleBarMetres(pixelsPerMetre, page.cols);
  const int end = kMargin + static_cast<int>(metres * pixelsPerMetre);
  cv::line(page, {kMargin, y}, {end, y}, kInk, 3);
  for (const int x : {kMargin, end}) cv::line(page, {x, y - 6}, {x, y + 6}, kInk, 3);
  write(page, session::shortest(static_cast<float>(metres)) + " m", {end + 14, y + 5});
}

std::string captionFor(session::Frame frame) {
  if (frame == session::Frame::robot) {
    return "Thick arcs: ranges without direction; filled zones: something is in them. Points out "
           "of range and on the floor are not drawn.";
  }
  return "All simulated sensors look in the robot's direction. Thick arcs: nearest echoes. Misses "
         "are not drawn.";
}

}  // namespace

cv::Mat withLegend(MapCanvas& canvas, const session::Snapshot& snapshot, bool hasWay) {
  const cv::Mat& image = canvas.getImage();
  const std::string& title = snapshot.title;
  const std::string caption = captionFor(snapshot.frame);
  const int width = std::max(
      {image.cols, 480, textWidth(title) * 3 / 2 + 2 * kMargin, textWidth(caption) + 2 * kMargin});
  const int titleHeight = 52;
  const int legendTop = titleHeight + image.rows + kLine + 8;
  const auto items = itemsOf(snapshot, hasWay);
  const int barY = layOut(items, width, legendTop, nullptr);
  cv::Mat page(barY + 2 * kLine + 10, width, CV_8UC3, kPaper);
  write(page, title, {kMargin, 34}, kTextSize * 1.4);
  image.copyTo(page(cv::Rect((width - image.cols) / 2, titleHeight, image.cols, image.rows)));
  layOut(items, width, legendTop, &page);
  drawScaleBar(page, canvas.getPixelsPerMetre(), barY);
  write(page, caption, {kMargin, barY + kLine + 8});
  return page;
}

}  // namespace QV::outlets
