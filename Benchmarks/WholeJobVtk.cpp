// A transfer as one writes it with VTK in C++, files to files: whole_job_vtk SOURCE TARGET OUTPUT. whole_jobs.py runs
// it beside the command on a small file, where the start of a process counts.
#include <vtkNew.h>
#include <vtkProbeFilter.h>
#include <vtkXMLUnstructuredGridReader.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 4)
    {
        std::cerr << "usage: whole_job_vtk SOURCE TARGET OUTPUT\n";
        return 64;
    }
    vtkNew<vtkXMLUnstructuredGridReader> source;
    source->SetFileName(argv[1]);
    vtkNew<vtkXMLUnstructuredGridReader> target;
    target->SetFileName(argv[2]);
    vtkNew<vtkProbeFilter> probe;
    probe->SetSourceConnection(source->GetOutputPort());
    probe->SetInputConnection(target->GetOutputPort());
    vtkNew<vtkXMLUnstructuredGridWriter> writer;
    writer->SetInputConnection(probe->GetOutputPort());
    writer->SetFileName(argv[3]);
    return writer->Write() == 1 ? 0 : 1;
}
