#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/base/PathText.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// What is said and asked, a line each: "i", "x" or "m" and a message (information, critical, no
/// icon), "y" or "n" and a question with that answer, "o" or "c" and one with OK and Cancel, "p"
/// and a progress form's caption, "end", the line of a dialog that is cancelled.
using Script = std::vector<std::string>;

/// A user who expects an exact sequence of messages, questions and dialogs, each with its texts,
/// buttons and icon, answers as told, and fails the test on anything else or anything missing.
class ScriptedUi : public Ui {
 public:
  ScriptedUi() = default;
  explicit ScriptedUi(const Script& script) { Expect(script); }
  ~ScriptedUi() override {
    for (const Step& step : script_) ADD_FAILURE() << "did not come: " << step.line;
  }

  void Expect(const Script& script) {
    for (const std::string& line : script) script_.push_back({line});
  }
  static std::string OpenFileLine(const std::string& title, const std::string& filter,
                                  const std::filesystem::path& folder) {
    return "open " + title + " filter " + filter + " in " + PathText(folder);
  }
  void ExpectOpenFile(const std::string& title, const std::string& filter,
                      const std::filesystem::path& initialFolder,
                      std::optional<std::filesystem::path> chosen) {
    script_.push_back({OpenFileLine(title, filter, initialFolder), std::move(chosen)});
  }
  void ExpectPickFolder(std::optional<std::filesystem::path> chosen) {
    script_.push_back({"folder picker", std::move(chosen)});
  }
  void ExpectMaskedInputBox(const std::string& prompt, std::optional<std::string> typed) {
    script_.push_back({"masked input box " + prompt, std::nullopt, std::move(typed)});
  }

  /// The values that the bars were set to, without repetitions.
  const std::vector<double>& Values() const { return values_; }
  const Progress& LastProgress() const { return last_; }

  void Message(std::string_view text, Icon icon) override {
    const std::string mark = icon == Icon::None ? "m " : icon == Icon::Information ? "i " : "x ";
    (void)Take({mark + std::string(text)});
  }
  Answer Question(std::string_view text, Buttons buttons, Stakes /*stakes*/) override {
    const std::string rest = " " + std::string(text);
    if (buttons == Buttons::YesNo)
      return Take({"y" + rest, "n" + rest}).line[0] == 'y' ? Answer::Yes : Answer::No;
    return Take({"o" + rest, "c" + rest}).line[0] == 'o' ? Answer::Ok : Answer::Cancel;
  }
  std::optional<std::filesystem::path> OpenFile(
      std::string_view title, std::string_view filter,
      const std::filesystem::path& initialFolder) override {
    return Take({OpenFileLine(std::string(title), std::string(filter), initialFolder)}).path;
  }
  std::optional<std::filesystem::path> PickFolder() override {
    return Take({"folder picker"}).path;
  }
  std::optional<std::string> MaskedInputBox(std::string_view prompt, SecretKind /*kind*/) override {
    return Take({"masked input box " + std::string(prompt)}).text;
  }
  void ShowProgressForm(std::string_view caption) override {
    (void)Take({"p " + std::string(caption)});
  }
  void SetProgress(const Progress& progress) override {
    if (values_.empty() || values_.back() != progress.value) values_.push_back(progress.value);
    last_ = progress;
  }
  void TellPlace(const std::filesystem::path& /*made*/) override {}
  bool GoOn() override { return true; }
  void EndProgram() override { (void)Take({"end"}); }

 private:
  struct Step {
    std::string line;
    std::optional<std::filesystem::path> path = std::nullopt;
    std::optional<std::string> text = std::nullopt;
  };

  /// The next step, which is to be one of these lines; when it is not, one with the last of them.
  Step Take(const Script& lines) {
    Step step = script_.empty() ? Step{"nothing more"} : script_.front();
    if (std::find(lines.begin(), lines.end(), step.line) == lines.end()) {
      ADD_FAILURE() << "came: " << lines.back() << "\nexpected: " << step.line;
      return {lines.back()};
    }
    script_.pop_front();
    return step;
  }

  std::deque<Step> script_;
  std::vector<double> values_;
  Progress last_;
};

}  // namespace slyver
