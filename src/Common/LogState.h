// Logging state that set-up makes and nobody else touches.
#pragma once

class VerbosityTable;

/// Replaces the table by which VLOG is decided and takes ownership; null: every file has verbosity
/// 0.
void SetVerbosityTable(const VerbosityTable* table);
