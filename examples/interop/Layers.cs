// The C# program of docs/guide/c.md: the layers of a drawing.
using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using System.Text;

//! [declare]
static class Kiln {
#if WINDOWS
    const string Library = "libKilnBase-0.1";  // .dll, with libvx-0.1.dll beside it
    const string Runtime = "msvcrt";
#else
    const string Library = "libKilnBase.so.0.1";
    const string Runtime = "libc";
#endif
    public const int NoError = 0, ItemNotFound = 12;
    public const int DoublyLinkedList = 1;

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate int Comparator(IntPtr a, IntPtr b);
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate int Visitor(IntPtr item, IntPtr user, IntPtr status);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr DS_create_type(int kind, ref int status, int line, IntPtr file);
    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr DS_set_comparator(IntPtr list, Comparator compare, ref int status);
    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int DS_destructor(ref IntPtr list, IntPtr free, IntPtr user,
                                           ref int status);
    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int Ds_dlist_add(IntPtr list, IntPtr item, ref int status);
    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr Ds_dlist_remove(IntPtr list, IntPtr item, IntPtr free, IntPtr user,
                                                ref int status);
    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int Ds_dlist_walk(IntPtr list, Visitor visit, IntPtr user, int limit,
                                           int direction, ref int status);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern double get_crv_fit_tolerance();
    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void set_crv_fit_tolerance(double tolerance);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr convertFilename(byte[] name, int toForward);
    [DllImport(Runtime, CallingConvention = CallingConvention.Cdecl)]
    public static extern void free(IntPtr memory);
}
//! [declare]

static class Program {
    static void Expect(bool holds, string what) {
        if (holds) return;
        Console.Error.WriteLine("not so: " + what);
        Environment.Exit(1);
    }

    //! [texts]
    static byte[] Utf8(string text) { return Encoding.UTF8.GetBytes(text + "\0"); }

    static IntPtr NewText(string text) {
        byte[] bytes = Utf8(text);
        IntPtr memory = Marshal.AllocHGlobal(bytes.Length);
        Marshal.Copy(bytes, 0, memory, bytes.Length);
        return memory;
    }

    static string TextAt(IntPtr memory) {
        int length = 0;
        while (Marshal.ReadByte(memory, length) != 0) ++length;
        byte[] bytes = new byte[length];
        Marshal.Copy(memory, bytes, 0, length);
        return Encoding.UTF8.GetString(bytes);
    }
    //! [texts]

    //! [names]
    static void Names() {
        // The library keeps the address of the function: the delegate must live as long.
        Kiln.Comparator compare = (a, b) => Math.Sign(string.CompareOrdinal(
            TextAt(Marshal.ReadIntPtr(a)), TextAt(Marshal.ReadIntPtr(b))));
        int status = Kiln.NoError;
        IntPtr layers = Kiln.DS_create_type(Kiln.DoublyLinkedList, ref status, 0,
                                            IntPtr.Zero);
        Kiln.DS_set_comparator(layers, compare, ref status);
        IntPtr water = NewText("water"), ground = NewText("ground");  // borrowed by the list
        Kiln.Ds_dlist_add(layers, water, ref status);
        Kiln.Ds_dlist_add(layers, ground, ref status);
        Expect(status == Kiln.NoError, "both were added");

        var found = new List<string>();
        Kiln.Visitor visit = (item, user, code) => { found.Add(TextAt(item)); return 1; };
        Kiln.Ds_dlist_walk(layers, visit, layers, -1, 0, ref status);
        Expect(string.Join(" ", found) == "ground water", "a C# function orders the names");

        Kiln.Ds_dlist_remove(layers, ground, IntPtr.Zero, IntPtr.Zero, ref status);
        Kiln.Ds_dlist_remove(layers, ground, IntPtr.Zero, IntPtr.Zero, ref status);
        Expect(status == Kiln.ItemNotFound, "the second removal failed");
        Kiln.DS_destructor(ref layers, IntPtr.Zero, IntPtr.Zero, ref status);
        GC.KeepAlive(compare);
        Marshal.FreeHGlobal(water);
        Marshal.FreeHGlobal(ground);
    }
    //! [names]

    //! [settings]
    static void Settings() {
        Kiln.set_crv_fit_tolerance(0.002);
        Expect(Kiln.get_crv_fit_tolerance() == 0.002, "the tolerance was set");
        IntPtr path = Kiln.convertFilename(Utf8("layers\\ground.txt"), 1);
        Expect(TextAt(path) == "layers/ground.txt", "the slashes were turned");
        Kiln.free(path);
    }
    //! [settings]

    static void Main() {
        Names();
        Settings();
    }
}
