"""What a person reads on the pages of the setup sheet, from top to bottom."""

READY = (
    "Processing service: connected\nPhoto vision model: ready\nVideo visual model: ready\n"
    "Audio event model: ready\nOCR: ready\nFace detection and identity: run on your phone"
)
ATTENTION = (
    "Processing service: connected\nPhoto vision model: Ollama/model needs attention\n"
    "Video visual model: needs attention\nAudio event model: needs attention\n"
    "OCR: native helper needs attention\nFace detection and identity: run on your phone"
)
STOPPED = (
    "Processing service: stopped\nStart the worker to check the installed scan engines."
)


def setup_pages(advanced, port):
    """Of each page the texts; the service is ready and tells no limits of its own."""
    pages = [
        [
            "HALVEX  /  STEP 1 OF 4",
            "A little more intelligence. Locally.",
            "Your phone selects the scan inputs. This Mac handles visual descriptions, selected "
            "video frames and useful sound events, then returns the results to the phone.",
            "Basic guides you through the essentials. Advanced also shows ports, model readiness "
            "and processing limits. You can skip now and reopen Setup at any time.",
        ],
        ["HALVEX  /  STEP 2 OF 4", "Check your scan engines", READY],
        [
            "HALVEX  /  STEP 3 OF 4",
            "Connect your phone",
            "1. Keep the Mac and phone on the same LAN or Wi-Fi.\n"
            "2. Open Corvala → Corvala setup and enable background scanning for the folders you "
            "selected.\n"
            "3. This Mac appears automatically. Saved work resumes when it is reachable and the "
            "phone's charging, battery and temperature rules allow it.",
            "Guest-network isolation can block discovery. A Wi-Fi hotspot also works when devices "
            "can reach one another. The Mac must stay awake; closing this dashboard leaves the "
            "worker running.",
        ],
        [
            "HALVEX  /  STEP 4 OF 4",
            "Choose how this Mac helps",
            "Pausing stops accepting new deep jobs. Running analysis finishes; work not yet "
            "started remains retryable on the phone. OCR and prescan remain available while the "
            "service is running.",
            "Existing models, network port and three processing slots are retained. Activity-aware "
            "mode works gently while you use the Mac and may use more spare power after five idle "
            "minutes. Setup does not download models or start a new phone library scan.",
        ],
    ]
    if advanced:
        pages[1] += [
            "Photo AI: installed Qwen vision model in Ollama. Video AI: SmolVLM2 on MLX/Metal. "
            "Sound: AST AudioSet (sound events, not speech transcription). OCR: Apple Vision. "
            "Models load when needed.",
            "Foreground or warm-Mac duty: 15% with one lane. Normal duty: 40%. Cool idle ceiling "
            "after five minutes: 65%. Capacity and duty recover gradually, but activity or heat "
            "downshifts immediately. These are rest-period targets, not operating-system CPU/GPU "
            "caps.",
        ]
        pages[2] += [
            f"Private-network HTTP port: {port}. Discovery: UDP 45831. Allow local network access "
            "if prompted. Direct endpoints can be configured on the phone when broadcast discovery "
            "is blocked. No public cloud fallback is enabled.",
        ]
    return pages
