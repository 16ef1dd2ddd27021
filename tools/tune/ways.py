"""The ways in which a game's frames can be scaled: what the rig is told for a setting,
what that does to a frame, and what the device is told in the end."""

from abc import ABC, abstractmethod
from dataclasses import dataclass
from pathlib import Path

from tools.common import games
from tools.common.filters import FILTERS
from tools.common.sizes import Size, rounded, scaled
from tools.common.stats import Frame
from tools.tune.settings import Setting


@dataclass(frozen=True)
class DeviceText:
    """A text to be put on the device; the note says where to, or why it is empty."""

    text: str
    note: str


@dataclass(frozen=True)
class DeviceTexts:
    node: DeviceText
    config: DeviceText
    property: DeviceText
    filter: DeviceText


NO_FILTER = DeviceText("", f"none: {FILTERS[0]} is what an unset property stands for")
NO_STRETCHING = DeviceText("", "none: no picture is stretched")
NO_NODE = DeviceText("", "none: Genshin Impact reads no node")
NO_CONFIG = DeviceText("", "none: only Genshin Impact reads a file (--game genshin)")
NO_PROPERTY = DeviceText("", "none: the games read none (--game any)")


def filter_options(setting: Setting) -> list[str]:
    """The launcher's, where the setting names another filter than what holds without."""
    return ["--filter", setting.filter] if setting.filter in FILTERS[1:] else []


def filter_text(setting: Setting) -> DeviceText:
    if setting.filter not in FILTERS[1:]:
        return NO_FILTER
    return DeviceText(f"vendor.vesko.filter.NAME={setting.filter}",
                      "to be set before the program starts; NAME is its process's name on the "
                      "device, from behind its last slash")


class Way(ABC):
    # In a few words, for the help.
    effect: str
    # Whether gameInternalFBOFactor has an effect.
    has_hdr: bool
    # Whether a picture is stretched over the window, with a filter.
    has_filters: bool
    # Whether a scaled picture should look like the native one resized.
    scales_whole_picture: bool
    # Why a picture may be wrong where the rig saw no cause.
    suspicion: str

    @abstractmethod
    def options(self, setting: Setting, folder: Path) -> list[str]:
        """The launcher's options for the setting; may write a file into the folder."""

    @abstractmethod
    def render_size(self, setting: Setting, window: Size) -> Size:
        ...

    @abstractmethod
    def presents(self, setting: Setting, frame: Frame) -> bool:
        """Whether the plug-in blits the frame to the window."""

    @abstractmethod
    def why_not_scaled(self, setting: Setting, frame: Frame, native: Frame) -> str:
        """Empty where the frame shows that the setting did what it is for."""

    @abstractmethod
    def device_texts(self, setting: Setting) -> DeviceTexts:
        ...


class Window(Way):
    """FB0Factor scales what is drawn to the window."""

    effect = "scales the window"
    has_hdr = True
    has_filters = True
    scales_whole_picture = True
    suspicion = ("The program may count on state that does not survive a presented frame: the "
                 "clear colour, vertex arrays, buffers or textures that it sets up once "
                 "(docs/rig.md, Limits). Compare the pictures")

    def options(self, setting: Setting, folder: Path) -> list[str]:
        result = ["--set", f"FB0Factor={setting.factor}",
                  "--set", f"gameInternalFBOFactor={setting.hdr}", *filter_options(setting)]
        # Desktop drivers never let the plug-in recognise the framebuffer otherwise.
        return [*result, "--quirk", "attachment-sizes"] if setting.hdr != 100 else result

    def render_size(self, setting: Setting, window: Size) -> Size:
        return scaled(window, setting.factor)

    def presents(self, setting: Setting, frame: Frame) -> bool:
        return setting.factor != 100 and not frame.why_not_scaled

    def why_not_scaled(self, setting: Setting, frame: Frame, native: Frame) -> str:
        """The plug-in's own answer, then what the driver saw."""
        if setting.factor != 100 and frame.why_not_scaled:
            return frame.why_not_scaled
        if setting.hdr != 100 and scaled(frame.window, setting.hdr) not in (
                frame.offscreen - native.offscreen):
            return ("no framebuffer of the program was recognised as its high-precision one, so "
                    "gameInternalFBOFactor does nothing here")
        return ""

    def device_texts(self, setting: Setting) -> DeviceTexts:
        enable = 1 if setting.scales else 0
        node = DeviceText(f"status:7#enable:{enable}#FB0Factor:{setting.factor}#"
                          f"gameInternalFBOFactor:{setting.hdr}#",
                          "to be written by the kernel into its game parameter node")
        return DeviceTexts(node, NO_CONFIG, NO_PROPERTY, filter_text(setting))


class AnyProgram(Window):
    """The same for a program that asks for it, which draws to the target at 100 too."""

    effect = "scales the window of whatever program"
    has_hdr = False
    has_filters = True
    suspicion = ("Nothing that the program does should make its picture wrong "
                 "(docs/limits.md, Any program). Compare the pictures, and see the plug-in's log "
                 "for what it could not do")

    def options(self, setting: Setting, folder: Path) -> list[str]:
        return ["--set", f"FB0Factor={setting.factor}", *filter_options(setting)]

    def render_size(self, setting: Setting, window: Size) -> Size:
        return rounded(window, setting.factor)

    def presents(self, setting: Setting, frame: Frame) -> bool:
        return not setting.native and self.render_size(setting, frame.window) in frame.offscreen

    def device_texts(self, setting: Setting) -> DeviceTexts:
        if not setting.scales:
            asked = DeviceText("", "none: where vendor.vesko.scale.NAME is unset, nothing is "
                                   "scaled")
        else:
            asked = DeviceText(f"vendor.vesko.scale.NAME={setting.factor}",
                               "to be set before the program starts; NAME is its process's name on "
                               "the device, from behind its last slash")
        return DeviceTexts(DeviceText("", "none: the property holds the factor"), NO_CONFIG, asked,
                           filter_text(setting))


class InternalSizes(Way):
    """A line of the configuration file lowers sizes that the game asks for."""

    WIDEST = (1440, 648)  # stands for 100 %
    effect = "lowers internal sizes"
    has_hdr = False
    has_filters = False
    scales_whole_picture = False
    suspicion = "The program does not expect textures of another size than it asked for"

    def options(self, setting: Setting, folder: Path) -> list[str]:
        config = folder / f"qogl-{setting.slug}"
        config.write_text(self._line(setting) + "\n", encoding="ascii")
        return ["--config", str(config)]

    def render_size(self, setting: Setting, window: Size) -> Size:
        return scaled(self.WIDEST, setting.factor)

    def presents(self, setting: Setting, frame: Frame) -> bool:
        return False

    def why_not_scaled(self, setting: Setting, frame: Frame, native: Frame) -> str:
        if self.render_size(setting, frame.window) in frame.offscreen | frame.textures:
            return ""
        return ("the program makes no texture storage and sets no viewport of 1440x648, 1280x576 "
                "or 1080x486 that is wider than the target")

    def device_texts(self, setting: Setting) -> DeviceTexts:
        config = DeviceText(self._line(setting), "the line of /data/system/vkd/qogl")
        return DeviceTexts(NO_NODE, config, NO_PROPERTY, NO_STRETCHING)

    def _line(self, setting: Setting) -> str:
        width, height = scaled(self.WIDEST, setting.factor)
        return f"yuanshen {width} {height} 0"


# By the rig's --game; the other games scale nothing.
WAYS: dict[str, Way] = {
    "any": AnyProgram(),
    **{name: Window() for name in games.SCALES_WINDOW},
    **{name: InternalSizes() for name in games.LOWERS_SIZES},
}
