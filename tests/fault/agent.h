// The real agent library in this process, and a manager's requests to it without a network in between.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace agent {

// Before anything is registered; more than once does no harm.
void prepare();

// Where a request came in, and in which SNMP context.
struct Question {
  std::string name;
  std::string context = {};
};

// Names below the roots of the two modules begin with these instead.
inline constexpr char kExtensions[] = "S";
inline constexpr char kBridge[] = "B";

// Where there is no such object, or none that follows, or an error.
inline constexpr char kNothing[] = "nothing";

// What a manager is answered: "S.1.6.1.0 = INTEGER: 4".
std::string get(const Question &question);
std::string get_next(const Question &question);

// Every object below a root, by GETNEXT.
std::vector<std::string> walk(const Question &root);

// Whether a context has objects of BRIDGE-MIB.
bool has_context(const std::string &name);

// Lets the main loop turn, alarms included, until something holds. False when that takes so long that
// something must hang.
bool run_until(const std::function<bool()> &condition);

// The same while calls may fail: after one has, a few turns are enough.
void run_until_struck_or(const std::function<bool()> &condition);

// Waits until there is input for the main loop. False when that takes so long that something must hang.
bool wait_for_input();

// Descriptors that the main loop watches, and whether an alarm is set.
int watched_descriptors();
bool has_alarm();

// Notifications that were sent: how many, and each as its OID with its bindings behind it. Those that were
// taken are forgotten.
size_t sent_notifications();
std::vector<std::string> take_notifications();

}  // namespace agent
