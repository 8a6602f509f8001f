// A user who takes every dialog as it comes up.
#pragma once

#include "ScriptSource.h"

/// Presses item 1 in every dialog of this thread as long as it lives.
class OkUser {
  public:
    OkUser() : outer(SetEventSource(&script)) {}
    OkUser(const OkUser&) = delete;
    OkUser& operator=(const OkUser&) = delete;
    ~OkUser() { SetEventSource(outer); }

    ScriptSource& Script() { return script; }

  private:
    ScriptSource script{[](DialogPtr) { return PressItem(1); }};
    EventSource* outer;
};
