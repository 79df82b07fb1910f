// The program takes no orders from the environment.
#pragma once

namespace ca::launcher {

// Removes the variables by which SDL would load a library or write files: a variable of the
// player's account reaches an elevated launcher, too. All whose names begin with "SDL" go, in any
// case, but those that choose among the drivers that are built in. Main thread, before SDL's
// first function and before any other thread.
void removeOrders();

} // namespace ca::launcher
