#!/usr/bin/env python3
"""Writes a Cadrelle data file for the whole-program benchmarks.

  make_data_file.py PATH COUNT CONDITION [COUNT CONDITION ...]

For each COUNT CONDITION pair, COUNT jobs each with one Cron trigger of
CONDITION. Jobs are Send UDP MSG (kind 10) aimed at 127.0.0.1:9 (the discard
port on loopback): harmless whatever happens.
"""
import sys
from xml.sax.saxutils import escape

PARAMS = "bench $ 0 $ 0 $ 127.0.0.1 $ 9"


def main():
    path, pairs = sys.argv[1], sys.argv[2:]
    groups = [(int(pairs[i]), pairs[i + 1]) for i in range(0, len(pairs), 2)]
    jobs, triggers = [], []
    n = 0
    for count, condition in groups:
        for _ in range(count):
            jobs.append(
                " <JOB><ID>%d</ID><TYPE>10</TYPE><DESC>bench %d</DESC><ENABLE>1</ENABLE>"
                "<JINTERVAL>0</JINTERVAL><TID>%d</TID><JID></JID><INFO>%s</INFO></JOB>"
                % (n, n, n, escape(PARAMS)))
            triggers.append(
                " <TRIGGER><ID>%d</ID><TYPE>11</TYPE><CONDITION>%s</CONDITION>"
                "<PREVFIRE>0 0 0 1 1 * 1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE>"
                "<START>0 0 0 1 1 * 1999</START><END>59 59 23 31 12 * 2999</END></TRIGGER>"
                % (n, escape(condition)))
            n += 1
    with open(path, "w", encoding="utf-8") as f:
        f.write("\n".join(['<?xml version="1.0" encoding="UTF-8"?>', "<SCHEDULER>"] + jobs + triggers +
                          ["</SCHEDULER>"]) + "\n")


if __name__ == "__main__":
    main()
