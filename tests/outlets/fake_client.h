#pragma once

#include <vector>

#include <nlohmann/json.hpp>

#include "outlets/web/internal/web_handler.h"

namespace QV::test {

/** Keeps what it is sent. */
struct FakeClient : outlets::WebClient {
  FakeClient() : WebClient("") {}
  void send(outlets::WebMessage message) override { sent.push_back(std::move(message)); }

  /** Takes what has come since the last call, as JSON. */
  std::vector<nlohmann::json> takeTexts() {
    std::vector<nlohmann::json> texts;
    for (const auto& message : sent) texts.push_back(nlohmann::json::parse(*message.payload));
    sent.clear();
    return texts;
  }

  std::vector<outlets::WebMessage> sent;
};

}  // namespace QV::test
