#include <algorithm>
#include <utility>

#include "outlets/outlet.h"

namespace QV::outlets {

void OutletList::add(std::shared_ptr<Outlet> outlet) {
  outlets.push_back(std::move(outlet));
}

session::Demand OutletList::getDemand() const {
  session::Demand demand;
  for (const auto& outlet : outlets) session::addDemand(demand, outlet->getDemand());
  return demand;
}

bool OutletList::isWatched() const {
  return std::any_of(outlets.begin(), outlets.end(),
                     [](const auto& outlet) { return outlet->isWatched(); });
}

void OutletList::show(const session::Snapshot& snapshot) {
  for (const auto& outlet : outlets) {
    if (outlet->isWatched()) outlet->show(snapshot);
  }
}

void OutletList::showLog(const std::vector<ko::log::Record>& lines) {
  for (const auto& outlet : outlets) outlet->showLog(lines);
}

void OutletList::finish() {
  for (const auto& outlet : outlets) outlet->finish();
}

}  // namespace QV::outlets
