#include "Staylit/Replay/TapeFile.h"

namespace staylit {

TapeOutput::Answer TapeFile::append(std::string piece) {
  if (size_ + piece.size() > kLargest) {
    error_ = "the file has reached its largest size";
    return Answer::stop;
  }
  size_ += piece.size();
  error_ = file_->append(piece);
  return error_.empty() ? Answer::goOn : Answer::stop;
}

}  // namespace staylit
