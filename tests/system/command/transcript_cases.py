# SPDX-License-Identifier: Apache-2.0
"""Whole outputs and messages. Other cases compare the values in them with other programs."""
import os
import shutil

from case import case, expect, get_checker


def run_transcript(at, name):
    at.prepare_examples()
    shutil.copy(at.keys / "rsa2048_encrypted_pkcs8_for_tests_only.pem", "encrypted.pem")
    os.mkfifo("fifo")
    transcript = (at.source / f"tests/data/command/{name}.txt").read_text(encoding="utf-8")
    problems = list(get_checker(at).check_console(transcript))
    expect(not problems, "\n".join(problems))


@case("Outputs_AreThoseOfTheTranscript", is_posix=True)
def check_outputs(at):
    run_transcript(at, "outputs")


@case("Messages_AreThoseOfTheTranscript", is_posix=True)
def check_messages(at):
    run_transcript(at, "messages")


@case("ManualAndCompletion_AreThoseOfTheTranscript")
def check_pages(at):
    run_transcript(at, "pages")
