#include "python/module/Messages.hpp"

#include <nanobind/nanobind.h>

#include <deque>
#include <mutex>
#include <ostream>
#include <streambuf>
#include <string>

#include "du/LoadMessages.hpp"
#include "log/Log.hpp"
#include "python/module/Text.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

// The levels of Python's logging module.
constexpr int kDebug = 10;
constexpr int kInfo = 20;
constexpr int kWarning = 30;

struct Message {
  int level;
  std::string text;
};

std::mutex queueGuard;
std::deque<Message> queue;

int DeliverPending(void* /*unused*/) {
  try {
    DeliverMessages();
  } catch (nb::python_error& error) {
    error.restore();
    return -1;
  } catch (const std::exception& error) {  // no memory
    PyErr_SetString(PyExc_RuntimeError, error.what());
    return -1;
  }
  return 0;
}

bool TellsOfSuccess(const std::string& text) {
  for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
    if (text == DU::LoadMessagesOf(component).onSuccess) return true;
  }
  return false;
}

/// Takes the messages of one stream; each comes in one piece.
class MessageBuffer : public std::streambuf {
 public:
  explicit MessageBuffer(int level) : level_(level) {}

 protected:
  std::streamsize xsputn(const char* text, std::streamsize length) override {
    std::string message(text, static_cast<std::size_t>(length));
    const int level = TellsOfSuccess(message) ? kInfo : level_;
    if (!message.empty() && message.back() == '\n') message.pop_back();
    {
      const std::lock_guard<std::mutex> lock(queueGuard);
      queue.push_back({level, std::move(message)});
    }
    // Fails if much is pending; the next call of this module delivers, too.
    Py_AddPendingCall(DeliverPending, nullptr);
    return length;
  }
  int_type overflow(int_type character) override {
    const char text = traits_type::to_char_type(character);
    xsputn(&text, 1);
    return character;
  }

 private:
  int level_;
};

}  // namespace

void QueueMessages() {
  // Never destroyed: another library's static destructor may still log.
  static auto* const warnings = new std::ostream(new MessageBuffer(kWarning));
  static auto* const diagnostics = new std::ostream(new MessageBuffer(kDebug));
  ZARN::warn.SetOutput(warnings);
  ZARN::debug.SetOutput(diagnostics);
}

void DeliverMessages() {
  std::deque<Message> messages;
  {
    const std::lock_guard<std::mutex> lock(queueGuard);
    messages.swap(queue);
  }
  if (messages.empty()) return;
  const nb::object logger =
      nb::module_::import_("logging").attr("getLogger")("zarn");
  for (const Message& message : messages) {
    logger.attr("log")(message.level, "%s", TextOf(message.text));
  }
}

void StopQueueingMessages() {
  DeliverMessages();
  ZARN::warn.SetOutput(nullptr);
  ZARN::debug.SetOutput(nullptr);
}

}  // namespace ZARN::Python
