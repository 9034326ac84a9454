// How commands that answer with many records put them in order and print them.
#pragma once

#include "Command.h"

/// What `--sort` says; the user's preference without it.
ZRNameOrder orderOf(const Options& options);
/// Puts people in the order of their names and leaves out those behind `--limit`.
void arrange(const Options& options, ZRRoster& roster, ZRRecordList& people);
/// A line each, the start of the id and the name; with --json the cards.
void printRecords(const Options& options, ZRRoster& roster, const ZRRecordList& records);
