unit Main;

interface

uses
  System.Classes, FMX.Forms;

type
  TMainForm = class(TForm)
  end;

var
  MainForm: TMainForm;

implementation

{$R *.fmx}

end.
