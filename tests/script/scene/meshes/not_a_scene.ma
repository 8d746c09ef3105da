o cube
