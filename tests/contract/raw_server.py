#!/usr/bin/env python3
"""A server that sends what a test wants to see a client cope with, byte for byte, on a loopback port of its own choice.

Prints the port and serves until its standard input ends. The request's path tells what to send, every byte written %XX:

  /raw/<answer>    sends the answer and closes the connection
  /reset/<answer>  the same, but breaks the connection off
  /hold/<answer>   the same, but leaves the connection open until the client goes
"""
import contextlib
import socket
import struct
import sys
import threading
import urllib.parse


def serve(client):
    with contextlib.suppress(OSError), client, client.makefile("rb") as stream:
        _, verb, answer = stream.readline().split()[1].split(b"/")
        while stream.readline().strip():
            pass
        client.sendall(urllib.parse.unquote_to_bytes(answer))
        if verb == b"reset":
            client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            return
        if verb == b"raw":
            client.shutdown(socket.SHUT_WR)
        stream.read()


def accept(listener):
    while True:
        threading.Thread(target=serve, args=(listener.accept()[0],), daemon=True).start()


server = socket.create_server(("127.0.0.1", 0), backlog=64)
print(server.getsockname()[1], flush=True)
threading.Thread(target=accept, args=(server,), daemon=True).start()
sys.stdin.read()
