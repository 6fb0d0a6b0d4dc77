// How exceptions stay inside the library. Used by the client and the service; any thread.
#pragma once

#include <exception>

/// Returns what `body` returns, or `failed` when it throws. The unwinding of a thread that is cancelled in a call
/// passes through, as it must: whoever stops it ends the process. It is no exception that current_exception() knows.
template <class Result, class Body> Result contain(Result failed, Body body) {
  try {
    return body();
  } catch (...) {
    if (!std::current_exception())
      throw;
    return failed;
  }
}
