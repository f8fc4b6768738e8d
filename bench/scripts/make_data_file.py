#!/usr/bin/env python3
"""Writes a Cadrelle data file for the whole-program benchmarks.

  make_data_file.py PATH COUNT CONDITION [JOB_KIND] [PARAMS]

COUNT jobs, each with one Interval/Cron trigger of CONDITION (a cron text).
Jobs default to kind 10 (Send UDP MSG) aimed at 127.0.0.1:9 (the discard
port on loopback): harmless whatever happens.
"""
import sys
from xml.sax.saxutils import escape


def main():
    path, count, condition = sys.argv[1], int(sys.argv[2]), sys.argv[3]
    kind = int(sys.argv[4]) if len(sys.argv) > 4 else 10
    params = sys.argv[5] if len(sys.argv) > 5 else "bench $ 0 $ 0 $ 127.0.0.1 $ 9"
    out = ['<?xml version="1.0" encoding="UTF-8"?>', "<SCHEDULER>"]
    for i in range(count):
        out.append(
            " <JOB><ID>%d</ID><TYPE>%d</TYPE><DESC>bench %d</DESC><ENABLE>1</ENABLE>"
            "<JINTERVAL>0</JINTERVAL><TID>%d</TID><JID></JID><INFO>%s</INFO></JOB>"
            % (i, kind, i, i, escape(params)))
    for i in range(count):
        out.append(
            " <TRIGGER><ID>%d</ID><TYPE>11</TYPE><CONDITION>%s</CONDITION>"
            "<PREVFIRE>0 0 0 1 1 * 1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE>"
            "<START>0 0 0 1 1 * 1999</START><END>59 59 23 31 12 * 2999</END></TRIGGER>"
            % (i, escape(condition)))
    out.append("</SCHEDULER>")
    with open(path, "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
