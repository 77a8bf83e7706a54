#include "export/file_sink.h"

#include <utility>

namespace nebro::exports {

FileSink::FileSink(SafeFileWriter& file, size_t bufferSize) : file_(file) {
  failed_ = !pending_.Reserve(bufferSize);
  thread_ = std::thread([this] { Run(); });
}

FileSink::~FileSink() {
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !busy_; });
    stop_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

bool FileSink::Flush(ExportBytes& buffer) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !busy_; });
  if (failed_) return false;
  std::swap(buffer, pending_);
  busy_ = true;
  lock.unlock();
  changed_.notify_all();
  buffer.clear();
  return true;
}

bool FileSink::Drain() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !busy_; });
  return !failed_;
}

void FileSink::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return busy_ || stop_; });
    if (!busy_) return;
    // Only this thread touches pending_ while busy_ is set.
    lock.unlock();
    const bool written = file_.Write(pending_.view());
    lock.lock();
    failed_ = failed_ || !written;
    pending_.clear();
    busy_ = false;
    changed_.notify_all();
  }
}

}  // namespace nebro::exports
