// What happens when the agent loads and unloads the library, in its order.
#include "agent_session.h"
#include "connection.h"
#include "event_history.h"
#include "event_subscription.h"
#include "notification_registry.h"
#include "settings.h"
#include "waiting_time.h"

namespace {

void follow_subscriptions() { stpplatform::event_subscription().follow_subscriptions(); }

void begin_request() {
  stpplatform::waiting_time().begin_request();
  stpplatform::connection().image().begin_request();
  stpplatform::event_subscription().on_request();
}

void end_request() {
  stpplatform::waiting_time().end_request();
  stpplatform::connection().image().end_request();
}

__attribute__((constructor)) void on_load() {
  stpplatform::read_settings();
  stpplatform::watch_requests();
  stpplatform::on_request(begin_request, end_request);
  stpplatform::on_subscription_change(follow_subscriptions);
}

// Leaves nothing behind in the agent that points into this library.
__attribute__((destructor)) void on_unload() {
  stpplatform::stop_watching_requests();
  stpplatform::event_subscription().reset();
  stpplatform::connection().reset();
  // A process that still has subscriptions did not unload the module: it is the parent that an agent leaves
  // behind when it goes into the background, and the history is the daemon's to save.
  if (!stpplatform::has_subscriptions()) {
    stpplatform::save_event_history();
  }
}

}  // namespace
