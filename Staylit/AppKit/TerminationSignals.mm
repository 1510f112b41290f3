#include "Staylit/AppKit/TerminationSignals.h"

#import <AppKit/AppKit.h>
#include <signal.h>

namespace staylit {
namespace {

bool isIgnored(int signal) {
  struct sigaction current {};
  return sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

/// Keeps the signal from ending the process at once. This is a handler and not SIG_IGN, because
/// launched tools would inherit SIG_IGN and could then not be terminated.
void catchAndDiscard(int signal) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

}  // namespace

TerminationSignals::TerminationSignals() {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    if (!isIgnored(signal)) watch(signal);
  }
}

TerminationSignals::~TerminationSignals() {
  for (dispatch_source_t source : sources_) {
    dispatch_source_cancel(source);
  }
}

void TerminationSignals::watch(int signal) {
  catchAndDiscard(signal);
  dispatch_source_t source = dispatch_source_create(
      DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(signal), 0, dispatch_get_main_queue());
  dispatch_source_set_event_handler(source, ^{
    [NSApp terminate:nil];
  });
  dispatch_activate(source);
  sources_.push_back(source);
}

}  // namespace staylit
