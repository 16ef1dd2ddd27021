#!/usr/bin/env python3
"""Checks that a build of the library exports its interface and nothing else, that
arm/contract/exports.txt lists the same names, that virtual tables have the length that
the trampolines count on, and that the library calls itself without the dynamic linker.

usage: exports_test.py LIBRARY SOURCE_DIR NM [HIDDEN]

HIDDEN: how names begin that this build hides.
"""
import re
import subprocess
import sys

# Members by class, without the GL and EGL operations; a class's own name stands
# for its constructors and its destructor.
CLASSES = {
    'Impl': 'Impl setTargetTexResolution reset getGLDriverImpl setGLDriverImpl getEGLPlatformImpl',
    'DefaultImplV2': 'DefaultImplV2',
    'PUBGMHDImpl': 'PUBGMHDImpl reset glDrawElements eglSwapBuffersWithDamageKHR',
    'GenshinImpactImpl': 'GenshinImpactImpl reset setTargetTexResolution glTexStorage2D glViewport',
    'SGAMEImpl': '''SGAMEImpl reset eglMakeCurrent eglSwapBuffers glBindFramebuffer glViewport
        glScissor glBindTexture glShaderSource glDeleteFramebuffers glDeleteTextures
        checkIfEnableFunc renderTextureToFbo renderfboTodisplay Fbosetup releaseResourcesAll
        checkIfHdrFbo createHdrFbo releaseHdrFbo FboEnableVRS FboDisableVRS''',
    'FboBase': '''FboBase Fbosetup createFBO createFbogMultisampleEXT releaseFBO
        releaseResourcesAll loadShader createProgram setupGraphics queryGlFunctions FboEnableVRS
        FboDisableVRS collectParametersState reinstallParametersState renderTextureToFbo
        renderfboTodisplay''',
    'ImplFactory': 'ImplFactory getImpl defaultImplV2',
    'ContextManager': '''validateTLSKey getCurrentContext getNullContext bindAHookContext
        enableHooking disableHooking reset getGameType isMainRenderringThread getGameConfig
        parseGameConfig sKey sOnceKey hookingEnabled inited gameList nullContext
        TlsKeyInitializer::create''',
    'HookContext': '''HookContext isCurrentThreadNeedToHook setImpl getImpl initImpl startMonitor
        setmainRenderringThreadId getmainRenderringThreadId setTargetTexResolution reset''',
    'HookCore': '''HookCore initGLHooks getEGLPlatformHooks setGLHooksThreadSpecific
        setEGLHooksThreadSpecific''',
    'HookManager': '''HookManager setEGLImpl getDefaultEGLPlatformImpl getEGLPlatformHooks
        setGLHooksThreadSpecific setEGLHooksThreadSpecific enableHooking disableHooking reset
        hookCore gEGLImpl default_platform''',
    'MonitorThread': '''MonitorThread start reset initGameInfo threadProc eventProcess
        parseprocessData''',
    'QoGPUVeskoModeImpl': '''~QoGPUVeskoModeImpl getEGLPlatformHooks init setGLHooksThreadSpecific
        isInWhiteList''',
}
IMPLS = ('Impl', 'DefaultImplV2', 'PUBGMHDImpl', 'GenshinImpactImpl', 'SGAMEImpl')
# Two words come before the functions: the object's offset and the type information.
TABLE_HEAD = 2
FREE = ('gameInfo', 'impl', 'setGLHooksThreadSpecific', 'setGlThreadSpecific')


def read(path: str) -> str:
    with open(path, encoding='utf-8') as file:
        return file.read()


def entries(path: str, macro: str) -> list[str]:
    return re.findall(rf'^{macro}(?:_64)?\(.*?, (\w+), \(', read(path), re.M)


def number(name: str, path: str) -> int:
    """What a header defines a constant as."""
    return int(re.findall(rf'{name} = (\d+);', read(path))[0])


def entry_counts(source: str) -> tuple[int, int]:
    """How many GL and how many EGL entries there are."""
    records = f'{source}/platform/loader/records.h'
    return number('kGLEntryCount', records), number('kEGLEntryCount', records)


def game_stems(source: str) -> list[str]:
    rows = read(f'{source}/games/games.in')
    return re.findall(r'^GAME_ROW\(\w+, *\d+, *\w+, *(\w+),', rows, re.M)


def expected_symbols(source: str) -> set[str]:
    gl = entries(f'{source}/platform/gl_entries.in', 'GL_ENTRY')
    egl = entries(f'{source}/platform/egl_entries.in', 'EGL_ENTRY')
    assert (len(gl), len(egl)) == entry_counts(source), 'the lists are not what this test reads'
    symbols = {'createImplInstance', 'destroyImplInstance'}
    symbols.update(f'{name}_hook' for name in gl)
    symbols.update(f'android::{name}_hook' for name in egl)
    symbols.update(f'android::{name}' for name in FREE)
    for cls, members in CLASSES.items():
        for member in members.split():
            symbols.add(f'android::{cls}::{member}')
            if member == cls:
                symbols.add(f'android::{cls}::~{member}')
    symbols.update(f'android::Impl::{name}' for name in gl + egl)
    symbols.update(f'android::DefaultImplV2::{name}' for name in gl)
    symbols.update(f'vtable for android::{cls}' for cls in (*IMPLS, 'QoGPUVeskoModeImpl'))
    for stem in game_stems(source):
        symbols.add(f'android::ImplFactory::{stem}Impl')
        symbols.add(f'android::ContextManager::{stem}Context')
    return symbols


def plain(demangled: str) -> str:
    # Neither parameters nor "const" nor ABI tags say which symbol it is.
    return re.sub(r'\(.*|\[abi:\w+\]|@.*', '', demangled)


def listed_symbols(source: str) -> set[str]:
    names = re.sub(r'#.*|@ABI@', '', read(f'{source}/arm/contract/exports.txt'))
    demangled = subprocess.run(['c++filt'], input=names, check=True, capture_output=True, text=True)
    return {plain(name) for name in demangled.stdout.splitlines() if name}


def exported_symbols(library: str, nm: str) -> set[str]:
    lines = subprocess.run([nm, '-D', '-C', '--defined-only', library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return {plain(line.split(' ', 2)[2]) for line in lines}


def wrong_tables(library: str, source: str, nm: str) -> list[str]:
    """Virtual tables of Impls that do not end with the last EGL entry."""
    lines = subprocess.run([nm, '-D', '-S', '--defined-only', library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    first = number('kImplFirstEntry', f'{source}/interception/Impl.h')
    words = TABLE_HEAD + first + sum(entry_counts(source))
    wrong = [f'the virtual table of {cls}, which is not there' for cls in IMPLS
             if not any(line.endswith(f' _ZTVN7android{len(cls)}{cls}E') for line in lines)]
    for address, size, *_, name in (line.split() for line in lines):
        cls = re.fullmatch(r'_ZTVN7android\d+(\w+)E', name)
        pointer = len(address) // 2
        if cls and cls.group(1) in IMPLS and int(size, 16) != words * pointer:
            wrong.append(f'the virtual table of {cls.group(1)}: {int(size, 16) // pointer} words, '
                         f'not {words}')
    return wrong


def detours(library: str, nm: str) -> list[str]:
    """Functions of the library itself that it calls through a linkage table."""
    relocations = subprocess.run(['readelf', '-rW', library], check=True, capture_output=True,
                                 text=True).stdout
    called = set(re.findall(r'JUMP_SLO\w*\s+\w+\s+(\w+)', relocations))
    if not called:
        sys.exit('readelf shows no calls to other libraries, which cannot be')
    lines = subprocess.run([nm, '-D', '--defined-only', library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return sorted(called & {line.split()[-1] for line in lines})


def wrong_sizes(library: str, nm: str) -> list[str]:
    """Variables that take a part of an object: a program's copy takes as much."""
    with open(library, 'rb') as elf:
        word = 4 * elf.read(5)[4]
    expected = {'_ZN7android11ImplFactory13defaultImplV2E': 2 * word,
                '_ZN7android14ContextManager4sKeyE': 4}
    lines = subprocess.run([nm, '-DS', '--defined-only', library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    sizes = {line.split()[-1]: int(line.split()[1], 16) for line in lines}
    return [name for name, size in expected.items() if sizes.get(name) != size]


def main() -> int:
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__.strip())
    nm = sys.argv[3]
    expected = expected_symbols(sys.argv[2])
    listed = listed_symbols(sys.argv[2])
    if hidden := sys.argv[4:]:
        expected, listed = ({name for name in names if not name.startswith(hidden[0])}
                            for names in (expected, listed))
    exported = exported_symbols(sys.argv[1], nm)
    faults = [f'not exported: {name}' for name in sorted(expected - exported)]
    faults += [f'not part of the interface: {name} (leave PLUGIN_API away, or add it to CLASSES '
               'in this test)' for name in sorted(exported - expected)]
    faults += [f'arm/contract/exports.txt lacks {name}: add its mangled name'
               for name in sorted(expected - listed)]
    faults += [f'arm/contract/exports.txt has {name}, which is not part of the interface'
               for name in sorted(listed - expected)]
    faults += wrong_tables(sys.argv[1], sys.argv[2], nm)
    faults += [f'wrong size: {name}' for name in wrong_sizes(sys.argv[1], nm)]
    faults += [f'called through the dynamic linker: {name}' for name in detours(sys.argv[1], nm)]
    print(*faults, f'{len(exported)} exported, {len(expected)} expected', sep='\n')
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main())
