// A display that remembers the commands that it gets, and answers them as a test says.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "zynview/FakeStages.h"

struct RecordedParameters : FakeComponent {
  uint32_t GetParameterInt(const char* name, int64_t* result) override {
    const auto found = values.find(name);
    if (found == values.end()) return 0x80FF0000u | ZYN_ERR_NOT_FOUND;
    *result = std::stoll(found->second);
    return 0;
  }
};

struct RecordingDisplay : FakeDisplay {
  RecordingDisplay() : FakeDisplay(ZYN_PIXEL_MONO8) {}

  RecordedParameters parameters;
  std::vector<std::pair<std::string, QTD::ARGUMENTS>> commands;
  std::function<uint32_t(const std::string& name, QTD::ARGUMENTS* args)> answer;
  std::vector<uint64_t> shownIDs;
  uint32_t videoCode = 0;

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    commands.emplace_back(name, args ? *args : QTD::ARGUMENTS());
    return answer ? answer(name, args) : 1;
  }
  ZynComponent* GetComponent() override { return &parameters; }
  uint32_t DisplayVideo(const ZynImage* image) override {
    shownIDs.push_back(image->imageID);
    return videoCode;
  }

  std::vector<QTD::ARGUMENTS> Of(const std::string& name) const {
    std::vector<QTD::ARGUMENTS> found;
    for (const auto& command : commands) {
      if (command.first == name) found.push_back(command.second);
    }
    return found;
  }
};
