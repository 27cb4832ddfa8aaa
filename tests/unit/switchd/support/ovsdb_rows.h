// Rows of Open vSwitch's database from texts.
#pragma once

#include <string>

#include "sources/openvswitch/ovsdb_rows.h"

// The texts are table updates alone, or the whole message with them: a reply to a monitor request, or an
// update.
void reset_rows(stpswitch::OvsdbRows *rows, const std::string &text);
void update_rows(stpswitch::OvsdbRows *rows, const std::string &text);
bool text_tells_rstp(const std::string &text);

// Rows after a reset.
stpswitch::OvsdbRows rows_of(const std::string &text);

// Takes every update in the text of a stream, as far as it can be understood.
void update_rows_from_stream(stpswitch::OvsdbRows *rows, const std::string &octets);
