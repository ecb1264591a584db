// Physics and voice: the scripts' bridges to the physics environment, the server's voice routing and the
// query of a client's console variable. The one thing kept is the object event handler that
// tw_physics "start" hands to the environment.
#pragma once

// Unload: the handler, if any, is taken out of the environment and destroyed.
void Physics_OnUnload();
