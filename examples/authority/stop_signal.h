#pragma once

// SIGTERM and SIGINT, as something that can be waited for.

#include "authority/descriptor.h"

namespace authority {

/// The wish that the process ends. Made before all threads, as it takes the signals from those made
/// afterwards alone.
class StopSignal {
  public:
    StopSignal();

    /// Any number of threads may ask. Once true it stays so.
    bool requested() const;

    /// Becomes readable with the wish, and stays so.
    int descriptor() const { return signals_.get(); }

  private:
    Descriptor signals_;  // never read, so that a signal that has come stays there
};

}  // namespace authority
