"""The Python program of docs/guide/c.md: the layers of a drawing."""

import ctypes

import kilnbase


def expect(holds, what):
    if not holds:
        raise SystemExit(f"not so: {what}")


def names():
    # [names]
    with kilnbase.Names(key=str.lower) as layers:
        for name in ("Water", "ground", "Öl"):
            layers.add(name)
        expect(list(layers) == ["ground", "Water", "Öl"], "a Python function orders the names")
        layers.remove("ground")
        try:
            layers.remove("ground")
        except kilnbase.KilnError as error:
            expect(error.code == kilnbase.MR_ITEM_NOT_FOUND, "the second removal failed")
        else:
            expect(False, "a removal of nothing is an error")
    # [names]


def heights():
    # [array]
    array = kilnbase.MR_array_new(ctypes.sizeof(ctypes.c_double), 100, 16)
    for i in range(100):
        kilnbase.MR_array_put(array, i, ctypes.byref(ctypes.c_double(0.5 * i)))
    doubles = ctypes.c_double * array.contents.count
    view = doubles.from_address(kilnbase.MR_array_get(array, 0))  # until the array grows
    expect(sum(view) == 2475.0, "Python reads the elements in place")
    kilnbase.MR_array_free(ctypes.byref(array))  # ends the view, too
    # [array]


def settings():
    # [settings]
    kilnbase.set_crv_fit_tolerance(0.002)
    expect(kilnbase.get_crv_fit_tolerance() == 0.002, "the tolerance was set")
    path = kilnbase.convert_filename("layers\\ground.txt", to_forward=True)
    expect(path == "layers/ground.txt", "the slashes were turned")
    # [settings]


names()
heights()
settings()
