# SPDX-License-Identifier: MIT
# shellcheck shell=sh
#
# To be sourced. Runs a simulated management daemon, and kecpp-agent with it if need be, for as long
# as the script lives.

# start_simulator PROGRAM ARGUMENT...: starts it on a free port of loopback and waits until it
# listens. Sets $config, a configuration file for it. Its files are in a temporary folder, which
# goes with the script.
start_simulator() {
  program=$1
  shift
  simulator_folder=$(mktemp -d)
  trap stop_simulator EXIT
  trap 'exit 1' INT TERM
  : > "$simulator_folder/output"
  "$program" --listen-port 0 --ticket-dir "$simulator_folder" "$@" \
    > "$simulator_folder/output" 2>&1 &
  simulator=$!
  await_simulator
  config=$simulator_folder/config.xml
  write_config "$url" > "$config"
}

# start_agent PROGRAM ARGUMENT...: starts kecpp-agent for the simulated daemon on a free port of
# loopback and waits until it listens. Sets $agent_url.
start_agent() {
  agent_program=$1
  shift
  : > "$simulator_folder/agent"
  "$agent_program" --config "$config" --listen 127.0.0.1:0 "$@" > "$simulator_folder/agent" &
  agent=$!
  tries=100
  until agent_url=$(sed -n 's/^listening on //p' "$simulator_folder/agent") &&
    [ -n "$agent_url" ]; do
    tries=$((tries - 1))
    if [ "$tries" -eq 0 ] || ! kill -0 "$agent" 2>/dev/null; then
      echo "kecpp-agent did not start" >&2
      exit 1
    fi
    sleep 0.1
  done
}

stop_simulator() {
  for process in ${agent:-} "$simulator"; do
    kill "$process" 2>/dev/null || true
    wait "$process" 2>/dev/null || true
  done
  rm -rf "$simulator_folder"
}

# Sets $url from the line that the simulator prints when it listens; gives up after ten seconds.
await_simulator() {
  tries=100
  until url=$(sed -n 's/^listening on //p' "$simulator_folder/output") && [ -n "$url" ]; do
    tries=$((tries - 1))
    if [ "$tries" -eq 0 ] || ! kill -0 "$simulator" 2>/dev/null; then
      cat "$simulator_folder/output" >&2
      echo "the simulated daemon did not start" >&2
      exit 1
    fi
    sleep 0.1
  done
}

write_config() {
  cat <<END
<?xml version="1.0" encoding="UTF-8"?>
<Config>
   <SSLInfo>
      <certFile/>
      <passPhrase/>
      <keyFile/>
      <CACertFile/>
   </SSLInfo>
   <ConnectionInfo>
      <url>$1</url>
      <timeout>60</timeout>
   </ConnectionInfo>
   <LoginInfo>
      <localTicket>true</localTicket>
      <userName>root</userName>
      <password></password>
   </LoginInfo>
   <LogInfo>
      <level>error</level>
   </LogInfo>
</Config>
END
}
