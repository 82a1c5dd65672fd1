// Lists the BOMs of a database, asks whether the first one is in use, and shows how an error arrives:
//   csc /platform:x64 ListBoms.cs        (x86 for the 32-bit component)
//   ListBoms "DESCRIPTOR"
// Late-bound by "dynamic", so no reference is needed.
// Not tried yet: it was written by the documentation of C#, where no Windows was at hand.
using System;
using System.Runtime.InteropServices;

static class ListBoms
{
    static dynamic Create(string progId)
    {
        return Activator.CreateInstance(Type.GetTypeFromProgID(progId, true));
    }

    // The component's objects live in single-threaded apartments.
    [STAThread]
    static void Main(string[] arguments)
    {
        string descriptor = arguments[0];
        dynamic view = Create("QorvaneMBomBill.BomView");
        dynamic boms = view.GetBomLdgInfo(descriptor);
        int first = 0;
        for (int i = 1; i <= boms.UBound; i++)
        {
            dynamic bom = boms.Item(i);
            Console.WriteLine("{0} {1}", bom.Value("FBOMNumber"), bom.Value("FStatus"));
            if (i == 1) first = bom.Value("FInterID");
        }

        // strInfo comes back changed where there is something to say.
        dynamic update = Create("QorvaneMBomBill.BomUpdate");
        string info = "";
        Console.WriteLine("CheckBomUsed: {0}", update.CheckBomUsed(descriptor, first, ref info));

        try
        {
            view.GetBomLdgInfo(descriptor, "no condition");
        }
        catch (COMException error)
        {
            Console.WriteLine("Error: {0:X8} from {1}", error.ErrorCode, error.Source);
        }
    }
}
