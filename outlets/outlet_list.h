#pragma once

#include <memory>
#include <vector>

#include "outlets/outlet.h"

namespace QV::outlets {

/** Several outlets as one. */
class QV_API OutletList : public Outlet {
 public:
  void add(std::shared_ptr<Outlet> outlet);

  session::Demand getDemand() const override;
  bool isWatched() const override;
  /** To those that are watched. */
  void show(const session::Snapshot& snapshot) override;
  void showLog(const std::vector<ko::log::Record>& lines) override;
  void finish() override;

 private:
  std::vector<std::shared_ptr<Outlet>> outlets;
};

}  // namespace QV::outlets
