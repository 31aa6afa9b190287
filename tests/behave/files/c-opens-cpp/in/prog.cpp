int main;
