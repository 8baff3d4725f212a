#pragma once

#include <condition_variable>
#include <mutex>
#include <streambuf>
#include <string>

namespace brisko::testing {

// Standard input that a test feeds while the program reads it on another thread: a read waits
// until text is fed or the input is closed, as a read from a pipe does.
class FedInput final : public std::streambuf {
public:
    void feed(const std::string& text);
    void close();
    // Waits until the reader has taken everything fed so far and waits for more.
    void awaitReaderWaiting();

protected:
    int_type underflow() override;

private:
    std::mutex lock_;
    std::condition_variable changed_;
    std::string pending_;
    bool closed_ = false;
    bool readerWaiting_ = false;
    std::string reading_;  // the reader's buffer, touched only by the reading thread
};

}  // namespace brisko::testing
