#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "Tidewell/Words.h"

namespace tidewell {

/// Has the translations that a test gives it. The words are this translator's until it goes.
class FakeTranslator {
 public:
  FakeTranslator() { Words::setTranslator(translator_); }
  ~FakeTranslator() { Words::setTranslator(nullptr); }
  FakeTranslator(const FakeTranslator&) = delete;
  FakeTranslator& operator=(const FakeTranslator&) = delete;

  void translate(const std::string& text, const std::string& translation) {
    translator_->translations[text] = translation;
  }
  /// Gives every other text these marks around it, so that one sees what nobody can translate.
  void markAll(const std::string& before, const std::string& after) {
    translator_->before = before;
    translator_->after = after;
  }

 private:
  /// Lives as long as anything that was translated by it.
  class Kept : public Translator {
   public:
    const char* find(const char* text) const override { return found(text, text); }
    const char* find(const char* one, const char* many, std::uint64_t count) const override {
      return found(one, count == 1 ? one : many);
    }

    std::map<std::string, std::string> translations;
    std::string before;
    std::string after;

   private:
    const char* found(const std::string& text, const char* form) const {
      const auto translation = translations.find(text);
      if (translation != translations.end()) return kept(translation->second);
      return before.empty() ? form : kept(before + form + after);
    }
    /// What is found lives as long as the process.
    static const char* kept(const std::string& text) {
      static std::mutex mutex;
      static std::set<std::string> all;
      const std::lock_guard lock(mutex);
      return all.insert(text).first->c_str();
    }
  };

  std::shared_ptr<Kept> translator_ = std::make_shared<Kept>();
};

}  // namespace tidewell
