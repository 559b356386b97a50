#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/system/PathText.h"
#include "engine/system/Ui.h"

namespace slyver {

/// A user who expects an exact sequence of messages, questions and dialogs, each with its texts,
/// buttons and icon, answers as told, and fails the test on anything else or anything missing.
class ScriptedUi : public Ui {
 public:
  ~ScriptedUi() override {
    for (const Step& step : script_) ADD_FAILURE() << "did not come: " << step.call;
  }

  void ExpectMessage(const std::string& text, Icon icon) { Expect(MessageCall(text, icon)); }
  void ExpectQuestion(const std::string& text, Answer answer, Buttons buttons = Buttons::YesNo) {
    script_.push_back({QuestionCall(text, buttons, Icon::None), answer, {}, {}});
  }
  void ExpectOpenFile(const std::string& title, const std::string& filter,
                      const std::filesystem::path& initialFolder,
                      std::optional<std::filesystem::path> chosen) {
    script_.push_back({OpenFileCall(title, filter, initialFolder), {}, std::move(chosen), {}});
  }
  void ExpectPickFolder(std::optional<std::filesystem::path> chosen) {
    script_.push_back({"folder picker", {}, std::move(chosen), {}});
  }
  void ExpectMaskedInputBox(const std::string& prompt, std::optional<std::string> typed) {
    script_.push_back({"masked input box \"" + prompt + "\"", {}, {}, std::move(typed)});
  }
  void ExpectProgressForm(const std::string& caption) { Expect(ProgressFormCall(caption)); }
  void ExpectEndProgram() { Expect("end of the program"); }

  /// Asks the job to stop once so many bytes are copied.
  void StopAtBytes(std::uint64_t bytes) { stopAtBytes_ = bytes; }

  /// The values that the bars were set to, without repetitions.
  const std::vector<double>& Values() const { return values_; }
  const Progress& LastProgress() const { return last_; }

  void Message(std::string_view text, Icon icon) override {
    (void)Take(MessageCall(std::string(text), icon));
  }
  Answer Question(std::string_view text, Buttons buttons, Icon icon) override {
    const Answer refusal = buttons == Buttons::YesNo ? Answer::No : Answer::Cancel;
    return Take(QuestionCall(std::string(text), buttons, icon)).answer.value_or(refusal);
  }
  std::optional<std::filesystem::path> OpenFile(
      std::string_view title, std::string_view filter,
      const std::filesystem::path& initialFolder) override {
    return Take(OpenFileCall(std::string(title), std::string(filter), initialFolder)).path;
  }
  std::optional<std::filesystem::path> PickFolder() override { return Take("folder picker").path; }
  std::optional<std::string> MaskedInputBox(std::string_view prompt) override {
    return Take("masked input box \"" + std::string(prompt) + "\"").text;
  }
  void ShowProgressForm(std::string_view caption) override {
    (void)Take(ProgressFormCall(std::string(caption)));
  }
  void SetProgress(const Progress& progress) override {
    if (values_.empty() || values_.back() != progress.value) values_.push_back(progress.value);
    last_ = progress;
  }
  bool GoOn() override { return !stopAtBytes_ || last_.bytesDone < *stopAtBytes_; }
  void EndProgram() override { (void)Take("end of the program"); }

 private:
  struct Step {
    std::string call;
    std::optional<Answer> answer;
    std::optional<std::filesystem::path> path;
    std::optional<std::string> text;
  };

  static std::string MessageCall(const std::string& text, Icon icon) {
    return "message \"" + text + "\" icon " + std::to_string(static_cast<int>(icon));
  }
  static std::string QuestionCall(const std::string& text, Buttons buttons, Icon icon) {
    return "question \"" + text + "\" buttons " + std::to_string(static_cast<int>(buttons)) +
           " icon " + std::to_string(static_cast<int>(icon));
  }
  static std::string OpenFileCall(const std::string& title, const std::string& filter,
                                  const std::filesystem::path& folder) {
    return "open \"" + title + "\" filter \"" + filter + "\" in " + PathText(folder);
  }
  static std::string ProgressFormCall(const std::string& caption) {
    return "progress form \"" + caption + "\"";
  }

  void Expect(const std::string& call) { script_.push_back({call, {}, {}, {}}); }

  Step Take(const std::string& call) {
    if (script_.empty() || script_.front().call != call) {
      ADD_FAILURE() << "came: " << call << "\nexpected: "
                    << (script_.empty() ? std::string("nothing more") : script_.front().call);
      return {};
    }
    Step step = script_.front();
    script_.pop_front();
    return step;
  }

  std::deque<Step> script_;
  std::optional<std::uint64_t> stopAtBytes_;
  std::vector<double> values_;
  Progress last_;
};

}  // namespace slyver
