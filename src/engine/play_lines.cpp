#include "engine/play_lines.h"

#include <algorithm>

namespace tallyrink {

void PlayLines::clear() {
    count_ = 0;
    shortCount_ = 0;
    lastComposed_ = -1;
    texts_.clear();
    marks_.clear();
    shortTexts_.clear();
    ended_ = false;
}

void PlayLines::endPlay() {
    ended_ = true;
    endCount_ = count_;
    endTexts_ = texts_.size();
    endShort_ = shortTexts_.size();
    endShortCount_ = shortCount_;
}

void PlayLines::startPlay() {
    if (!ended_) return;  // the play goes on (a draw's lines belong to the play after it)
    ended_ = false;
    if (count_ == endCount_ && texts_.size() == endTexts_ && shortTexts_.size() == endShort_) {
        clear();
        return;
    }
    // Lines told between the plays open this one.
    std::copy(memory_.begin() + endCount_, memory_.begin() + count_, memory_.begin());
    count_ -= endCount_;
    shortCount_ -= endShortCount_;
    texts_.erase(texts_.begin(), texts_.begin() + static_cast<std::ptrdiff_t>(endTexts_));
    marks_.erase(marks_.begin(), marks_.begin() + static_cast<std::ptrdiff_t>(endTexts_));
    shortTexts_.erase(shortTexts_.begin(), shortTexts_.begin() + static_cast<std::ptrdiff_t>(endShort_));
    lastComposed_ = texts_.empty() ? -1 : static_cast<int>(texts_.size()) - 1;
}

LineMarks& PlayLines::keep(std::string&& text) {
    lastComposed_ = static_cast<int>(texts_.size());
    texts_.push_back(std::move(text));
    marks_.emplace_back();
    return marks_.back();
}

void PlayLines::rewrite(std::string&& text, NamedMan opens, NamedMan ends) {
    if (count_ == 0 || full()) return;
    memory_[at(count_ - 1)] = {text == kPause, opens, ends};
    if (telling_ && lastComposed_ >= 0) texts_[at(lastComposed_)] = std::move(text);
}

void PlayLines::pause() { add(std::string(kPause)); }

void PlayLines::markLastLine(std::string_view mark) {
    for (auto it = texts_.rbegin(); it != texts_.rend(); ++it)
        if (*it != kPause) {
            *it += mark;
            return;
        }
}

void PlayLines::addPlain(std::string text, LineMarks marks) {
    if (!telling_) return;
    texts_.push_back(std::move(text));
    marks_.push_back(marks);
}

void PlayLines::addShort(std::string text) {
    ++shortCount_;
    if (telling_) shortTexts_.push_back(std::move(text));
}

bool PlayLines::lastNames(const NamedMan& man) const { return recentlyNamed(man, 1); }

bool PlayLines::recentlyNamed(const NamedMan& man, int n) const {
    if (man.empty()) return false;
    for (int i = std::max(0, count_ - n); i < count_; ++i)
        if (memory_[at(i)].opens == man || memory_[at(i)].ends == man) return true;
    return false;
}

}  // namespace tallyrink
