# Shared by the example checks, sourced. Under the sanitizers, leaks are left
# to the log's count and to the memcheck soak run: the one block Mesa's driver
# keeps (tools/valgrind.supp) is found only after the driver is unloaded, and
# with Mesa's frames missing no suppression can name it.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"

# Succeeds when the engine's log in the working folder balanced every counted
# allocation, "Final memory ratio: 0 (N/N)"; says what it found otherwise.
memory_balanced() {
  local summary
  summary=$(grep '^Final memory ratio' pevrano_log.txt | tail -n 1)
  [[ $summary =~ ^Final\ memory\ ratio:\ 0\ \(([0-9]+)/([0-9]+)\)$ ]] && [ "${BASH_REMATCH[1]}" = "${BASH_REMATCH[2]}" ] &&
    return 0
  echo "log summary: '$summary'"
  return 1
}
