// What the list of items needs to know about the machine. Most answers are cached for the life of
// the process and may go stale when a display is attached later; that is accepted. Host thread
// only.
#pragma once

class IMMonitor;

/// True when the adapter can drive three displays together.
bool TripleDisplaySupported();

/// True when an NVIDIA adapter has all of the notebook's outputs.
bool IsNvidiaDiscreteOnly();

/// False when the active vendor's own object sees displays and cannot place them across two
/// adapters: the panel and an HDMI or DVI output cannot then be cloned.
bool CanCloneOnDiscreteOutputs();

/// The question behind CanCloneOnDiscreteOutputs, asked once of a new object that `create` makes;
/// the answer is kept.
bool CanCloneOnDiscreteOutputs(IMMonitor* (*create)());
